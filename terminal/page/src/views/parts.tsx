import { h } from "preact";
import { store } from "../app";
import { averageText, dealText, nameOf, priceText } from "../describe";
import { age, fixed, moment, money, percent, signed, whole } from "../format";
import { width } from "../layout";
import { Field, fieldName, fieldValue, Kind } from "../texts/fields";
import { named, t } from "../texts/texts";
import { isBuying } from "../ticket/ticket";
import { OfCode } from "../wire/values";

// Small pieces that all views are made of.

export function ageText(at: number, now: number): string {
  const [number, unit] = age(now - at);
  return unit === "s" && number < 2 ? t("justNow") : t("ago", number, t(unit));
}

// From a minute on, the age of figures that are out of date is less clear than their time.
export function staleText(at: number): string {
  const [now, age] = [store.platform.now(), store.now - at];
  return age < 60_000 ? ageText(at, store.now) : t("asOf", moment(now - age, now));
}

export const quoteOf = (row: { hashCode: number }) => store.quote(row.hashCode);

export function toneOf(value: number): string {
  return value > 0 ? "gain" : value < 0 ? "loss" : "";
}

// A gain or a loss: by its sign and by its colour.
export function Gain(props: { value: number; text?: string; class?: string }) {
  const { value, text } = props;
  return <span class={`num ${toneOf(value)} ${props.class ?? ""}`}>{text ?? signed(value, 2)}</span>;
}

function kindText(kind: Kind, value: unknown, row: unknown): string {
  const code = (row as { hashCode?: number }).hashCode;
  const quote = code === undefined ? undefined : store.quote(code);
  switch (kind) {
    case "money":
      return money(value);
    case "gain":
      return signed(value, 2);
    case "percent":
      return percent(value);
    case "gainPercent":
      return percent(value, true);
    case "times":
      return Number.isFinite(value) ? `${fixed(value, 2)}×` : fixed(value, 2);
    case "price":
      return priceText(value, quote);
    case "average":
      return averageText(value, quote);
    case "count":
      return whole(value);
    default:
      return typeof value === "string" && value !== "" ? value : "–";
  }
}

function FieldValue<Row>(props: { field: Field<Row>; row: Row }) {
  const { field, row } = props;
  const [, kind] = field;
  const value = fieldValue(field, row);
  const text = kindText(kind, value, row);
  if (kind === "gain" || kind === "gainPercent") return <Gain value={Number(value)} text={text} />;
  return <span class={kind === "text" ? "" : "num"}>{text}</span>;
}

export function FieldList<Row>(props: { fields: readonly Field<Row>[]; row: Row }) {
  return (
    <dl class="fields">
      {props.fields.map((field) => (
        <div key={field[2]}>
          <dt>{fieldName(field)}</dt>
          <dd>
            <FieldValue field={field} row={props.row} />
          </dd>
        </div>
      ))}
    </dl>
  );
}

const isAllAccounts = (): boolean => store.account === 0 && width() !== "desk"; // a desk has a column of accounts

export const withoutExchange = (codeExch: string): string => codeExch.replace(/\.[^.]*$/, "");

export function codeText(row: OfCode): string {
  return isAllAccounts() ? withoutExchange(row.codeExch) : row.codeExch;
}

// The account of a row, if rows of all accounts are mixed.
export function ownerText(row: OfCode): string {
  return isAllAccounts() ? `· ${row.userCode}` : "";
}

// The name of an instrument, its code and the account.
export function CodeName(props: { row: OfCode }) {
  const { row } = props;
  return (
    <span class="code">
      <b>{nameOf(row, quoteOf(row))}</b> <small>{codeText(row)}</small>{" "}
      <small class="num">{ownerText(row)}</small>
    </span>
  );
}

export function Deal(props: { side: number; offset: number; hashCode: number }) {
  const tone = isBuying(props.side) ? "buy" : "sell";
  return <span class={`deal ${tone}`}>{dealText(props.side, props.offset, store.quote(props.hashCode))}</span>;
}

// "2 @ 3,326"
export function Amount(props: { row: { hashCode: number; price: number; volume: number }; isMarket?: boolean }) {
  const { row } = props;
  return (
    <span class="amount">
      <b class="num">{whole(row.volume)}</b>{" "}
      <span class="num">
        @ {props.isMarket ? `${t("market")} ` : ""}
        {priceText(row.price, quoteOf(row))}
      </span>
    </span>
  );
}

export function StatusTag(props: { status: number }) {
  return <span class={`tag status${props.status}`}>{named("status", props.status)}</span>;
}

// What went wrong. The terminal's own text follows on the next line.
export function Note(props: { text: string; id?: string }) {
  return props.text === "" ? null : (
    <p class="failure" role="alert" id={props.id}>
      {props.text}
    </p>
  );
}

export function Icon(props: { path: string }) {
  return (
    <svg viewBox="0 0 24 24" aria-hidden="true">
      <path d={props.path} />
    </svg>
  );
}
