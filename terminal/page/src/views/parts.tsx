import { Component, h } from "preact";
import { Field, fieldName, Kind } from "../fields";
import { age, decimalsOf, fixed, money, percent, signed, whole } from "../format";
import { Held, ListName } from "../lists";
import { store } from "../store";
import { t } from "../texts";
import { Figures, OfCode } from "../wire";

// Small pieces that all views are made of.

export function ageText(at: number, now: number): string {
  const [number, unit] = age(now - at);
  return unit === "s" && number < 2 ? t("justNow") : t("ago", number, t(unit));
}

export function decimalsOfCode(hashCode: unknown): number {
  const quote = typeof hashCode === "number" ? store.quote(hashCode) : undefined;
  return quote === undefined ? 2 : decimalsOf(quote.priceTick);
}

export function priceText(value: unknown, hashCode: unknown): string {
  return fixed(value, decimalsOfCode(hashCode));
}

// Averages fall between the ticks.
export function averageText(value: unknown, hashCode: unknown): string {
  return fixed(value, Math.max(2, decimalsOfCode(hashCode)));
}

// A gain or a loss: by its sign and by its colour.
export function Gain(props: { value: unknown; text: string; class?: string }) {
  const value = Number(props.value);
  const tone = value > 0 ? "gain" : value < 0 ? "loss" : "";
  return <span class={`num ${tone} ${props.class ?? ""}`}>{props.text}</span>;
}

function kindText(kind: Kind, value: unknown, hashCode: unknown): string {
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
      return priceText(value, hashCode);
    case "average":
      return averageText(value, hashCode);
    case "count":
      return whole(value);
    default:
      return typeof value === "string" && value !== "" ? value : "–";
  }
}

export function FieldValue(props: { field: Field; row: Figures }) {
  const [member, kind] = props.field;
  const value = props.row[member];
  const text = kindText(kind, value, props.row.hashCode);
  if (kind === "gain" || kind === "gainPercent") return <Gain value={value} text={text} />;
  return <span class={kind === "text" ? "" : "num"}>{text}</span>;
}

export function FieldList(props: { fields: readonly Field[]; row: Figures }) {
  return (
    <dl class="fields">
      {props.fields.map((field) => (
        <div key={field[0]}>
          <dt>{fieldName(field)}</dt>
          <dd>
            <FieldValue field={field} row={props.row} />
          </dd>
        </div>
      ))}
    </dl>
  );
}

// The name of an instrument, by the row or by the quotes, and its code.
export function nameOf(row: OfCode): string {
  return (row.codeName as string) || store.quote(row.hashCode)?.codeName || row.codeExch;
}

export function CodeName(props: { row: OfCode }) {
  return (
    <span class="code">
      <b>{nameOf(props.row)}</b> <small>{props.row.codeExch}</small>
    </span>
  );
}

export function Note(props: { text: string }) {
  return props.text === "" ? null : (
    <p class="failure" role="alert">
      {props.text}
    </p>
  );
}

// A dialog over the page: it holds the focus, Escape closes it, and the focus goes back to where it was.
export class Sheet extends Component<{ title: string; onClose: () => void; children?: unknown }, {}> {
  private readonly before = document.activeElement;

  componentDidMount() {
    (this.base as HTMLDialogElement).showModal();
  }

  // A step further in the same dialog, whose first step took the focus with it.
  componentDidUpdate(previous: { title: string }) {
    if (previous.title !== this.props.title) this.base.querySelector("h2")?.focus();
  }

  componentWillUnmount() {
    (this.base as HTMLDialogElement).close();
    if (this.before instanceof HTMLElement) this.before.focus({ preventScroll: true }); // taken out, it gives none back
  }

  render() {
    const close = (event: Event) => {
      event.preventDefault();
      this.props.onClose();
    };
    return (
      <dialog
        class="sheet"
        aria-label={this.props.title}
        onCancel={close}
        onClick={(event: Event) => event.target === this.base && this.props.onClose()}
      >
        <header>
          <h2 tabIndex={-1}>{this.props.title}</h2>
          <button class="icon" aria-label={t("close")} onClick={close}>
            ✕
          </button>
        </header>
        <div class="sheet-body">{this.props.children}</div>
      </dialog>
    );
  }
}

export const kSettleMs = 400; // nobody reads and taps faster

// The button of a dialog that carries out what it asks. It takes no tap at first: the second one of a double tap on what
// opened the dialog would say yes to what nobody has read.
export class Confirm extends Component<
  { tone?: string; text: string; disabled: boolean; onConfirm: () => void },
  { isSettled: boolean }
> {
  state = { isSettled: false };
  private timer = 0;

  componentDidMount() {
    this.timer = window.setTimeout(() => this.setState({ isSettled: true }), kSettleMs);
  }

  componentWillUnmount() {
    clearTimeout(this.timer);
  }

  render() {
    const { tone, text, disabled, onConfirm } = this.props;
    return (
      <button class={`primary ${tone ?? ""}`} disabled={disabled || !this.state.isSettled} onClick={onConfirm}>
        {text}
      </button>
    );
  }
}

// A list under its heading: how many rows, how old, why it failed; greyed where it is stale.
export function ListFrame(props: {
  name: ListName;
  title: string;
  count: number;
  ofAccounts?: boolean; // with the choice of an account
  empty?: string;
  children?: unknown;
}) {
  const list = store.lists[props.name] as Held<unknown[]>;
  const isStale = store.isStale(props.name);
  return (
    <section class={isStale ? "list stale" : "list"} aria-label={props.title} data-list={props.name}>
      <header class="list-head">
        {props.ofAccounts ? <AccountPick /> : null}
        <span class="age">
          {list.at === 0 ? t("notLoaded") : `${t("rows", props.count)} · ${ageText(list.at, store.now)}`}
          {isStale && list.at > 0 ? <b class="stale-mark"> · {t("stale")}</b> : null}
        </span>
        <button class="icon" aria-label={t("refresh", props.title)} onClick={() => store.refresh(props.name)}>
          <svg viewBox="0 0 24 24" aria-hidden="true">
            <path d="M20 11a8 8 0 1 0-2.3 6.3M20 4v7h-7" />
          </svg>
        </button>
      </header>
      <Note text={list.failure} />
      {list.at > 0 && props.count === 0 ? <p class="empty">{props.empty ?? t("nothing")}</p> : null}
      {list.at === 0 && list.isAsked ? <p class="empty">{t("loading")}</p> : null}
      {props.children}
    </section>
  );
}

export function Choices(props: {
  name: string;
  label: string;
  value: number;
  values: number[];
  text: (value: number) => string;
  onPick: (value: number) => void;
  toneOf?: (value: number) => string;
}) {
  return (
    <fieldset class="choices">
      <legend>{props.label}</legend>
      <div>
        {props.values.map((value) => (
          <label key={String(value)} class={props.toneOf?.(value) ?? ""}>
            <input
              type="radio"
              name={props.name}
              value={String(value)}
              checked={value === props.value}
              onChange={() => props.onPick(value)}
            />
            <span>{props.text(value)}</span>
          </label>
        ))}
      </div>
    </fieldset>
  );
}

interface StepperProps {
  label: string;
  value: string;
  mode: "decimal" | "numeric";
  isDisabled?: boolean;
  onChange: (value: string) => void;
  onStep: (steps: number) => void;
}

// A number that can be typed, stepped by its buttons, or by the arrow keys.
export function Stepper(props: StepperProps) {
  const { label, isDisabled, onStep } = props;
  const step = (name: "less" | "more", steps: number, sign: string) => (
    <button type="button" class="icon" disabled={isDisabled} aria-label={t(name, label)} onClick={() => onStep(steps)}>
      {sign}
    </button>
  );
  const onKey = (event: KeyboardEvent) => {
    const steps = { ArrowUp: 1, ArrowDown: -1 }[event.key];
    if (steps === undefined) return;
    event.preventDefault();
    onStep(steps);
  };
  return (
    <div class="field">
      <span aria-hidden="true">{label}</span>
      <span class="stepper">
        {step("less", -1, "−")}
        <input
          class="num"
          aria-label={label}
          inputMode={props.mode}
          autocomplete="off"
          disabled={isDisabled}
          value={props.value}
          onInput={(event: Event) => props.onChange((event.target as HTMLInputElement).value)}
          onKeyDown={onKey}
        />
        {step("more", 1, "+")}
      </span>
    </div>
  );
}

// What a list comes to, above it.
export function Total(props: { name: string; value?: string; profit: number }) {
  return (
    <p class="total">
      <span>{props.name}</span>
      {props.value === undefined ? null : <b class="num">{props.value}</b>}
      <Gain value={props.profit} text={signed(props.profit, 2)} class="big" />
    </p>
  );
}

function AccountPick() {
  return (
    <label class="account-pick">
      <span class="hidden">{t("account")}</span>
      <select
        value={String(store.account)}
        onChange={(event: Event) => store.pickAccount(Number((event.target as HTMLSelectElement).value))}
      >
        <option value="0">{t("allAccounts")}</option>
        {store.lists.accounts.rows.map((account) => (
          <option key={String(account.index)} value={String(account.index)}>
            {account.userCode}
          </option>
        ))}
      </select>
    </label>
  );
}
