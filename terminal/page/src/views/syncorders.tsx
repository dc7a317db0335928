import { Component, h } from "preact";
import { whole } from "../format";
import { store } from "../store";
import { t } from "../texts";
import { SyncOrder } from "../wire";
import { Deal } from "./orders";
import { CodeName, Confirm, ListFrame, Note, priceText, Sheet } from "./parts";
import { Rows } from "./rows";

// Two orders of one instrument differ in their terms. The price is none of them: it follows the market, and an order
// that is picked stays so.
const keyOf = (row: SyncOrder): string =>
  `${row.index}:${row.hashCode}:${row.side}:${row.combOffsetFlag}:${row.volume}`;

const kMostAtOnce = 1000; // that the terminal takes in one request

function Terms(props: { row: SyncOrder }) {
  const { row } = props;
  return (
    <span class="row-text">
      <span class="line">
        <CodeName row={row} />
        <small>{row.userCode}</small>
      </span>
      <span class="line">
        <Deal side={row.side} offset={row.combOffsetFlag} hashCode={row.hashCode} />
        <span class="num">
          {priceText(row.price, row.hashCode)} × {whole(row.volume)}
        </span>
      </span>
    </span>
  );
}

interface State {
  picked: string[];
  isAsking: boolean;
  isSending: boolean;
  failure: string;
}

// The orders that would bring what is held to what should be held: picked, looked at once more, and placed.
export class SyncOrders extends Component<{}, State> {
  state: State = { picked: [], isAsking: false, isSending: false, failure: "" };

  private pick(row: SyncOrder, isPicked: boolean) {
    const others = this.state.picked.filter((key) => key !== keyOf(row));
    this.setState({ picked: isPicked ? [...others, keyOf(row)] : others });
  }

  private async place(rows: SyncOrder[]) {
    this.setState({ isSending: true, failure: "" });
    const body = rows.map(({ index, hashCode, volume, price, side, combOffsetFlag }) => {
      return { index, hashCode, volume, price, side, combOffsetFlag };
    });
    const { failure, isKnown } = await store.act("monitor.sync.order.new", body, ["sync", "monitor", "orders"]);
    const isOpen = this.base && this.state.isAsking; // the dialog may have been closed meanwhile
    if (isOpen && isKnown && failure !== "") return this.setState({ isSending: false, failure });
    // Where the reply was lost they may have been placed: nothing stays picked that one more tap would place again.
    this.setState({ isSending: false, isAsking: false, picked: [] });
    store.tell(failure || t("placed", rows.length), failure !== "");
  }

  private question(picked: SyncOrder[]) {
    const close = () => this.setState({ isAsking: false });
    return (
      <Sheet title={t("placeQuestion", picked.length)} onClose={close}>
        <ul class="plain">
          {picked.map((row) => (
            <li key={keyOf(row)}>
              <Terms row={row} />
            </li>
          ))}
        </ul>
        <div class="actions">
          <Note text={this.state.failure} />
          <button onClick={close}>{t("back")}</button>
          <Confirm
            text={t("place")}
            disabled={this.state.isSending || picked.length === 0 || store.isStale("sync")}
            onConfirm={() => void this.place(picked)}
          />
        </div>
      </Sheet>
    );
  }

  private row(row: SyncOrder, isPicked: boolean) {
    if (!store.may("trade")) {
      return (
        <span class="row-main">
          <Terms row={row} />
        </span>
      );
    }
    const pick = (event: Event) => this.pick(row, (event.target as HTMLInputElement).checked);
    return (
      <label class="row-main check">
        <input type="checkbox" checked={isPicked} onChange={pick} />
        <Terms row={row} />
      </label>
    );
  }

  private pickAll(rows: SyncOrder[], count: number) {
    const areAll = count === Math.min(rows.length, kMostAtOnce);
    const pick = () => this.setState({ picked: areAll ? [] : rows.map(keyOf) });
    return (
      <label class="check all">
        <input type="checkbox" checked={areAll} onChange={pick} />
        <span>{t("pickAll")}</span>
      </label>
    );
  }

  render() {
    const rows = store.picked(store.lists.sync.rows);
    const picked = rows.filter((row) => this.state.picked.includes(keyOf(row))).slice(0, kMostAtOnce);
    const ask = () => this.setState({ isAsking: true, failure: "" });
    return (
      <ListFrame name="sync" title={t("sync")} count={rows.length} ofAccounts empty={t("inSync")}>
        {store.may("trade") && rows.length > 0 ? this.pickAll(rows, picked.length) : null}
        <Rows
          rows={rows}
          nameOf={keyOf}
          height={4.5}
          render={(row: SyncOrder) => this.row(row, picked.includes(row))}
        />
        {picked.length > 0 ? (
          <button class="primary wide stick" disabled={store.isStale("sync")} onClick={ask}>
            {t("placePicked", picked.length)}
          </button>
        ) : null}
        {this.state.isAsking ? this.question(picked) : null}
      </ListFrame>
    );
  }
}
