import { Component, h } from "preact";
import { nav, store } from "../app";
import { nameOf, priceText, rowText } from "../describe";
import { decimalsOf, timeOfDay, whole } from "../format";
import { sheetArgument } from "../nav";
import { cancel } from "../state/actions";
import { orderName } from "../state/merge";
import { kOrderFields } from "../texts/fields";
import { explained } from "../texts/refusals";
import { named, t } from "../texts/texts";
import { amendmentOf } from "../ticket/ticket";
import { Order, PriceType, Status } from "../wire/values";
import { kSettleMs, Pick } from "./controls";
import { Column, List, rowsOfAccount } from "./list";
import { Amount, CodeName, Deal, FieldList, Note, quoteOf, StatusTag } from "./parts";
import { Sheet } from "./sheet";
import { CancelAll } from "./cancelall";

const isMarket = (row: Order): boolean => row.priceType === PriceType.Market;
const isWorking = (row: Order): boolean => row.status === Status.Working;
const text = (row: Order): string => rowText(row, quoteOf(row));

function card(row: Order) {
  return [
    <span class="line">
      <CodeName row={row} />
      {isWorking(row) ? null : <StatusTag status={row.status} />}
    </span>,
    <span class="line">
      <span>
        <Deal side={row.side} offset={row.combOffset} hashCode={row.hashCode} />{" "}
        <Amount row={row} isMarket={isMarket(row)} />
      </span>
      <small class="num">{timeOfDay(row.srcTimestamp)}</small>
    </span>,
    row.status === Status.Refused ? <small class="note reason">{explained(row.note)}</small> : null,
  ];
}

const kColumns: readonly Column<Order>[] = [
  { name: "time", value: (row) => row.srcTimestamp, cell: (row) => timeOfDay(row.srcTimestamp), share: 0.8 },
  { name: "instrument", value: (row) => nameOf(row, quoteOf(row)), cell: (row) => <CodeName row={row} />, share: 2 },
  { name: "account", cell: (row) => row.userCode },
  {
    name: "deal",
    cell: (row) => <Deal side={row.side} offset={row.combOffset} hashCode={row.hashCode} />,
    share: 1.2,
  },
  {
    name: "price",
    cell: (row) => (
      <span class="figures">
        {isMarket(row) ? `${t("market")} ` : ""}
        {priceText(row.price, quoteOf(row))}
      </span>
    ),
    isNumber: true,
  },
  {
    name: "volume",
    value: (row) => row.volume,
    cell: (row) => <span class="num">{whole(row.volume)}</span>,
    isNumber: true,
    share: 0.8,
  },
  {
    name: "status",
    value: (row) => row.status,
    cell: (row) => <StatusTag status={row.status} />,
    share: 1.2,
  },
  {
    name: "note",
    cell: (row) => <small class={row.status === Status.Refused ? "note reason" : "note"}>{explained(row.note)}</small>,
    share: 2,
  },
];

// The newest first; above them those that still work.
function sorted(rows: Order[]): Order[] {
  return [...rows].sort((a, b) => Number(isWorking(b)) - Number(isWorking(a)) || b.srcTimestamp - a.srcTimestamp);
}

function amend(order: Order): void {
  const quote = quoteOf(order);
  store.draft(amendmentOf(order, quote === undefined ? 2 : decimalsOf(quote.priceTick)));
  nav.open("trade");
}

function Details(props: { row: Order; onCancel: (row: Order) => void }) {
  const { row } = props;
  const isOnline = store.link === "online";
  return (
    <Sheet title={`${nameOf(row, quoteOf(row))} · ${row.userCode}`}>
      <p class="line">
        <Deal side={row.side} offset={row.combOffset} hashCode={row.hashCode} />
        <StatusTag status={row.status} />
      </p>
      <Note text={row.status === Status.Refused ? explained(row.note) : ""} />
      <FieldList fields={kOrderFields} row={row} />
      {isWorking(row) ? (
        <div class="actions">
          {store.may("cancel") ? (
            <button disabled={!isOnline} onClick={() => props.onCancel(row)}>
              {t("cancel")}
            </button>
          ) : null}
          {store.may("cancel") && store.may("trade") ? (
            <button class="primary" onClick={() => amend(row)}>
              {t("amend")}
            </button>
          ) : null}
        </div>
      ) : null}
    </Sheet>
  );
}

export class Orders extends Component<{}, { only: number }> {
  state = { only: 0 }; // the status that is shown; 0: each
  private places = "";
  private movedAt = 0;
  private sorted: { from: Order[]; rows: Order[] } = { from: [], rows: [] };

  // A row that has just come or gone has put another order under the finger.
  private watch(rows: Order[]) {
    const places = rows.map(orderName).join();
    if (places === this.places) return;
    this.places = places;
    this.movedAt = store.platform.clock();
  }

  private readonly cancel = (order: Order) => {
    const isMoving = store.platform.clock() - this.movedAt < kSettleMs;
    if (isMoving) store.tell(t("listMoved"), true);
    else void cancel(store, [order]);
  };

  private tools(working: Order[]) {
    const options = [0, ...Object.values(Status)].filter((each): each is number => typeof each === "number");
    return [
      <Pick
        label={t("status")}
        value={this.state.only}
        options={options.map((each) => [each, named("only", each)] as const)}
        onPick={(only) => this.setState({ only: Number(only) })}
      />,
      store.may("cancel") && working.length > 1 ? (
        <button
          class="danger small"
          aria-label={t("cancelAllOf", working.length)}
          disabled={store.link !== "online"}
          onClick={() => nav.open("cancelall")}
        >
          {t("cancelAll")}
        </button>
      ) : null,
    ];
  }

  private readonly cancelButton = (row: Order) =>
    isWorking(row) ? (
      <button
        class="cancel"
        aria-label={t("cancelOf", text(row))}
        disabled={store.link !== "online"}
        onClick={() => this.cancel(row)}
      >
        {t("cancel")}
      </button>
    ) : null;

  render() {
    const all = store.lists.orders.rows;
    if (this.sorted.from !== all) this.sorted = { from: all, rows: sorted(all) };
    const { rows } = this.sorted;
    const { only } = this.state;
    this.watch(rows);
    const { sheet } = store.place;
    const working = rowsOfAccount(rows).filter(isWorking);
    const opened = sheetArgument(sheet, "row");
    const open = rows.find((row) => orderName(row) === opened);
    return (
      <List
        name="orders"
        title={t("orders")}
        rows={rows}
        fits={(row: Order) => only === 0 || row.status === only}
        fitsBy={String(only)}
        nameOf={orderName}
        columns={kColumns}
        kindOf={(row: Order) => (row.status === Status.Refused ? "triple" : "pair")}
        card={card}
        onOpen={(row: Order) => nav.open(`row=${orderName(row)}`)}
        actions={store.may("cancel") ? this.cancelButton : undefined}
        tools={this.tools(working)}
      >
        {open === undefined ? null : <Details row={open} onCancel={this.cancel} />}
        {sheet === "cancelall" && store.lists.orders.at > 0 ? <CancelAll working={working} /> : null}
      </List>
    );
  }
}
