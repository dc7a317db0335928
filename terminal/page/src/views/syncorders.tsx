import { Component, h } from "preact";
import { whole } from "../format";
import { store } from "../store";
import { t } from "../texts";
import { SyncOrder } from "../wire";
import { Deal } from "./orders";
import { CodeName, ListFrame, nameOf, Note, priceText, Sheet } from "./parts";
import { Rows } from "./rows";

// Two orders of one instrument differ in their terms.
const keyOf = (row: SyncOrder): string =>
  `${row.index}:${row.hashCode}:${row.side}:${row.combOffsetFlag}:${row.volume}:${row.price}`;

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

// The orders that would bring what is held to what should be held: picked, looked at once more, placed as they were seen.
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
    const failure = await store.act("monitor.sync.order.new", body, ["sync", "monitor", "orders"]);
    this.setState({ isSending: false, isAsking: failure !== "", failure, picked: failure === "" ? [] : this.state.picked });
    if (failure === "") store.tell(t("placed", rows.length));
  }

  render() {
    const rows = store.picked(store.lists.sync.rows);
    const picked = rows.filter((row) => this.state.picked.includes(keyOf(row)));
    const mayTrade = store.may("trade");
    return (
      <ListFrame name="sync" title={t("sync")} count={rows.length} ofAccounts empty={t("inSync")}>
        {mayTrade && rows.length > 0 ? (
          <label class="check all">
            <input
              type="checkbox"
              checked={picked.length === rows.length}
              onChange={() => this.setState({ picked: picked.length === rows.length ? [] : rows.map(keyOf) })}
            />
            <span>{t("pickAll")}</span>
          </label>
        ) : null}
        <Rows
          rows={rows}
          nameOf={keyOf}
          height={4.5}
          render={(row: SyncOrder) => (
            <label class="row-main check">
              {mayTrade ? (
                <input
                  type="checkbox"
                  aria-label={nameOf(row)}
                  checked={picked.includes(row)}
                  onChange={(event: Event) => this.pick(row, (event.target as HTMLInputElement).checked)}
                />
              ) : null}
              <Terms row={row} />
            </label>
          )}
        />
        {mayTrade && picked.length > 0 ? (
          <button
            class="primary wide stick"
            disabled={store.link !== "online"}
            onClick={() => this.setState({ isAsking: true, failure: "" })}
          >
            {t("placePicked", picked.length)}
          </button>
        ) : null}
        {this.state.isAsking ? (
          <Sheet title={t("placeQuestion", picked.length)} onClose={() => this.setState({ isAsking: false })}>
            <ul class="plain">
              {picked.map((row) => (
                <li key={keyOf(row)}>
                  <Terms row={row} />
                </li>
              ))}
            </ul>
            <div class="actions">
              <Note text={this.state.failure} />
              <button onClick={() => this.setState({ isAsking: false })}>{t("back")}</button>
              <button
                class="primary"
                disabled={this.state.isSending || picked.length === 0 || store.link !== "online"}
                onClick={() => void this.place(picked)}
              >
                {t("place")}
              </button>
            </div>
          </Sheet>
        ) : null}
      </ListFrame>
    );
  }
}
