import { h } from "preact";
import { nav, store } from "../app";
import { averageText, nameOf, priceText } from "../describe";
import { profitToday, startMoney, sumOf } from "../figures";
import { percent, signed, whole } from "../format";
import { width } from "../layout";
import { sheetArgument } from "../nav";
import { isHeld } from "../state/wanted";
import { kPositionFields } from "../texts/fields";
import { t } from "../texts/texts";
import { Position } from "../wire/values";
import { Column, List, rowsOfAccount } from "./list";
import { Live } from "./live";
import { CodeName, codeText, FieldList, Gain, ownerText, quoteOf } from "./parts";
import { PositionActions } from "./positionactions";
import { Sheet } from "./sheet";
import { DayCurve, Spark } from "./spark";

const follow = (row: Position): Position => store.prices.position(row);
const nameOfRow = (row: Position): string => `${row.index}:${row.hashCode}`;

interface LegProps {
  row: Position;
  name: "long" | "short";
}

function legOf({ row, name }: LegProps) {
  return name === "long"
    ? { volume: row.longPosition, free: row.longAvailableQuantity, average: row.longAvgPrice }
    : { volume: row.shortPosition, free: row.shortAvailableQuantity, average: row.shortAvgPrice };
}

const legsOf = (row: Position): ("long" | "short")[] =>
  (["long", "short"] as const).filter((name) => legOf({ row, name }).volume > 0);

function Leg(props: LegProps) {
  const leg = legOf(props);
  return (
    <span class={`leg ${props.name}`}>
      <i>{t(props.name)}</i> <b class="num">{whole(leg.volume)}</b>{" "}
      <small class="num">@ {averageText(leg.average, quoteOf(props.row))}</small>{" "}
      {leg.free === leg.volume ? null : (
        <small class="num free">
          {t("closable")} {whole(leg.free)}
        </small>
      )}
    </span>
  );
}

const spark = ({ hashCode, currentPrice, preSettlementPrice }: Position) => (
  <Spark hashCode={hashCode} last={currentPrice} base={preSettlementPrice} />
);

function card(row: Position) {
  const legs = legsOf(row);
  return [
    <span class="line">
      <span class="code">
        <b>{nameOf(row, quoteOf(row))}</b> <small>{codeText(row)}</small>
      </span>
      {spark(row)}
      <Gain value={row.floatPorfit} class="strong" />
    </span>,
    ...legs.map((name, place) => (
      <span class="line" key={name}>
        <span>
          <Leg row={row} name={name} /> <small class="num">{place > 0 ? "" : ownerText(row)}</small>
        </span>
        {place > 0 ? null : (
          <small>
            <Gain value={row.todayPorfit} />
          </small>
        )}
      </span>
    )),
  ];
}

const kColumns: readonly Column<Position>[] = [
  { name: "instrument", value: (row) => nameOf(row, quoteOf(row)), cell: (row) => <CodeName row={row} />, share: 1.65 },
  { name: "account", cell: (row) => row.userCode, share: 1.1 },
  { name: "held", cell: (row) => legsOf(row).map((name) => <Leg key={name} row={row} name={name} />), share: 1.95 },
  {
    name: "last",
    cell: (row) => (
      <span class="with-spark">
        {spark(row)}
        <span class="num">{priceText(row.currentPrice, quoteOf(row))}</span>
      </span>
    ),
    isNumber: true,
    share: 1.5,
  },
  {
    name: "floating",
    value: (row) => row.floatPorfit,
    cell: (row) => <Gain value={row.floatPorfit} />,
    isNumber: true,
    share: 1.5,
  },
  {
    name: "today",
    value: (row) => row.todayPorfit,
    cell: (row) => <Gain value={row.todayPorfit} />,
    isNumber: true,
    share: 1.5,
  },
  {
    name: "size",
    value: (row) => row.totalMarketValue,
    cell: (row) => <span class="num">{whole(row.totalMarketValue)}</span>,
    isNumber: true,
    share: 1.35,
  },
];

function Details(props: { row: Position; follows: boolean }) {
  return (
    <div class="plain">
      <DayCurve row={props.row} />
      <FieldList fields={kPositionFields} row={props.row} />
      {props.follows ? <p class="hint">{t("followsLong")}</p> : null}
    </div>
  );
}

// The floating profit of the positions shown, and today's profit of their accounts: it takes in what was closed whole.
function Totals(props: { rows: Position[] }) {
  const capital = rowsOfAccount(store.lists.capital.rows).map((row) => store.prices.capital(row));
  const today = sumOf(capital, profitToday);
  const money = sumOf(capital, startMoney);
  const floating = sumOf(props.rows, (row) => row.floatPorfit + store.prices.gainOf(row));
  return (
    <span class="totals">
      <span>
        {t("floating")} <Gain value={floating} class="strong" />
      </span>
      <span>
        {t("today")} <Gain value={today} class="strong" />{" "}
        <Gain value={today} text={money > 0 ? percent(today / money, true) : signed(0, 2)} />
      </span>
    </span>
  );
}

export function Positions() {
  const all = store.lists.positions.rows;
  const opened = sheetArgument(store.place.sheet, "row");
  const open = opened === null ? undefined : all.find((row) => nameOfRow(row) === opened);
  return (
    <List
      name="positions"
      title={t("positions")}
      rows={all}
      follow={follow}
      followed="follows"
      fits={isHeld}
      nameOf={nameOfRow}
      columns={kColumns}
      kindOf={(row: Position) => (legsOf(row).length > 1 ? "triple" : "pair")}
      card={card}
      onOpen={(row: Position) => nav.open(`row=${nameOfRow(row)}`)}
      actions={width() === "desk" ? (row: Position) => <PositionActions pair={row} /> : undefined}
      total={(rows: Position[]) => <Live draw={() => <Totals rows={rows} />} />}
      caption={t("floatingToday")}
    >
      {open === undefined ? null : (
        <Sheet title={`${nameOf(open, quoteOf(open))} · ${open.userCode}`}>
          <Live code={open.hashCode} draw={() => <Details row={follow(open)} follows={follow(open) !== open} />} />
          <PositionActions pair={open} />
        </Sheet>
      )}
    </List>
  );
}
