import { Component, h } from "preact";
import { clock } from "../clock";
import { kFillFields, kOrderFields } from "../fields";
import { timeOfDay, whole } from "../format";
import { fillName, orderName } from "../merge";
import { store } from "../store";
import { named, t } from "../texts";
import { isBuying, isSecurity } from "../ticket";
import { Fill, kMarket, kWorking, Order } from "../wire";
import { CodeName, FieldList, kSettleMs, ListFrame, nameOf, priceText, Sheet } from "./parts";
import { Rows } from "./rows";

// Side and offset in words: "Buy Open". Of securities the side says it all.
export function Deal(props: { side: number; offset: number; hashCode: number }) {
  const quote = store.quote(props.hashCode);
  const offset = quote !== undefined && isSecurity(quote) ? "" : ` ${named("offset", props.offset)}`;
  return (
    <span class={isBuying(props.side) ? "deal buy" : "deal sell"}>
      {named("side", props.side)}
      {offset}
    </span>
  );
}

// What tells it from others of its instrument: "螺纹钢2701 Buy 3,301 × 2".
function orderText(order: Order): string {
  const { side, price, volume, hashCode } = order;
  return `${nameOf(order)} ${named("side", side)} ${priceText(price, hashCode)} × ${whole(volume)}`;
}

const cancelling = new Set<string>(); // their replies are awaited; another tap asks nothing more

async function cancel(order: Order): Promise<void> {
  const { index, hashCode, localOrderId } = order;
  const name = orderName(order);
  if (cancelling.has(name)) return;
  cancelling.add(name);
  const { failure } = await store.act("order.cancel", [{ index, hashCode, localOrderId }], ["orders"]);
  cancelling.delete(name);
  store.tell(failure === "" ? t("cancelSent", orderText(order)) : `${orderText(order)}: ${failure}`, failure !== "");
}

function OrderRow(props: { row: Order; onOpen: () => void; onCancel: () => void }) {
  const { row } = props;
  const isWorking = row.status === kWorking;
  return (
    <div class="row-pair">
      <button class="row-main" onClick={props.onOpen}>
        <span class="line">
          <CodeName row={row} />
          <span class={`tag status${row.status}`}>{named("status", row.status)}</span>
        </span>
        <span class="line">
          <Deal side={row.side} offset={row.combOffset} hashCode={row.hashCode} />
          <small class="cut">{row.note || row.userCode}</small>
        </span>
        <span class="line">
          <small>{timeOfDay(row.srcTimestamp)}</small>
          <span class="num">
            {row.priceType === kMarket ? `${t("market")} ` : ""}
            {priceText(row.price, row.hashCode)} × {whole(row.volume)}
          </span>
        </span>
      </button>
      {isWorking && store.may("cancel") ? (
        <button
          class="cancel"
          aria-label={t("cancelOf", orderText(row))}
          disabled={store.link !== "online"}
          onClick={props.onCancel}
        >
          {t("cancel")}
        </button>
      ) : null}
    </div>
  );
}

// The newest first; among them those that still work.
function sorted(rows: Order[]): Order[] {
  const rank = (order: Order) => (order.status === kWorking ? 0 : 1);
  return [...rows].sort((a, b) => rank(a) - rank(b) || b.srcTimestamp - a.srcTimestamp);
}

export class Orders extends Component<{}, { open: string }> {
  state = { open: "" };
  private places = "";
  private movedAt = 0;

  // A row that has just come or gone has put another order under the finger.
  private watch(rows: Order[]) {
    const places = rows.map(orderName).join();
    if (places === this.places) return;
    this.places = places;
    this.movedAt = clock();
  }

  private cancel(order: Order) {
    if (clock() - this.movedAt < kSettleMs) store.tell(t("listMoved"), true);
    else void cancel(order);
  }

  render() {
    const rows = sorted(store.picked(store.lists.orders.rows));
    this.watch(rows);
    const open = rows.find((row) => orderName(row) === this.state.open);
    return (
      <ListFrame name="orders" title={t("orders")} count={rows.length} ofAccounts>
        <Rows
          rows={rows}
          nameOf={orderName}
          height={5.75}
          render={(row: Order) => (
            <OrderRow
              row={row}
              onOpen={() => this.setState({ open: orderName(row) })}
              onCancel={() => this.cancel(row)}
            />
          )}
        />
        {open === undefined ? null : (
          <Sheet title={`${nameOf(open)} · ${open.userCode}`} onClose={() => this.setState({ open: "" })}>
            <p class="line">
              <Deal side={open.side} offset={open.combOffset} hashCode={open.hashCode} />
              <span class={`tag status${open.status}`}>{named("status", open.status)}</span>
            </p>
            <FieldList fields={kOrderFields} row={open} />
          </Sheet>
        )}
      </ListFrame>
    );
  }
}

function FillRow(props: { row: Fill; onOpen: () => void }) {
  const { row } = props;
  return (
    <button class="row-main" onClick={props.onOpen}>
      <span class="line">
        <CodeName row={row} />
        <small>
          {timeOfDay(row.exchTimestamp)} · {row.userCode}
        </small>
      </span>
      <span class="line">
        <Deal side={row.side} offset={row.combOffset} hashCode={row.hashCode} />
        <span class="num">
          {priceText(row.price, row.hashCode)} × {whole(row.volume)}
        </span>
      </span>
    </button>
  );
}

export class Fills extends Component<{}, { open: string }> {
  state = { open: "" };

  render() {
    const rows = [...store.picked(store.lists.fills.rows)].sort((a, b) => b.exchTimestamp - a.exchTimestamp);
    const open = rows.find((row) => fillName(row) === this.state.open);
    return (
      <ListFrame name="fills" title={t("fills")} count={rows.length} ofAccounts>
        <Rows
          rows={rows}
          nameOf={fillName}
          height={4.25}
          render={(row: Fill) => <FillRow row={row} onOpen={() => this.setState({ open: fillName(row) })} />}
        />
        {open === undefined ? null : (
          <Sheet title={`${nameOf(open)} · ${open.userCode}`} onClose={() => this.setState({ open: "" })}>
            <FieldList fields={kFillFields} row={open} />
          </Sheet>
        )}
      </ListFrame>
    );
  }
}
