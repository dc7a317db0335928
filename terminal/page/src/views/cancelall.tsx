import { Component, h } from "preact";
import { nav, store } from "../app";
import { rowText } from "../describe";
import { cancel } from "../state/actions";
import { orderName } from "../state/merge";
import { t } from "../texts/texts";
import { Order } from "../wire/values";
import { Confirm } from "./controls";
import { quoteOf } from "./parts";
import { Sheet } from "./sheet";

// Asks whether to cancel the orders that worked when the dialog was opened. Those that come later are not among them.
export class CancelAll extends Component<{ working: Order[] }, {}> {
  private readonly asked = new Set(this.props.working.map(orderName));

  render() {
    const orders = this.props.working.filter((order) => this.asked.has(orderName(order)));
    const cancelAll = () => {
      nav.close();
      void cancel(store, orders);
    };
    return (
      <Sheet title={t("cancelQuestion", orders.length)}>
        <ul class="plain asked">
          {orders.map((order) => (
            <li key={orderName(order)}>{rowText(order, quoteOf(order))}</li>
          ))}
        </ul>
        <div class="actions">
          <button onClick={() => nav.close()}>{t("keepThem")}</button>
          <Confirm
            tone="danger"
            text={t("cancelThem", orders.length)}
            disabled={orders.length === 0 || store.link !== "online"}
            onConfirm={cancelAll}
          />
        </div>
      </Sheet>
    );
  }
}
