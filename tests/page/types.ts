import { Store } from "../../terminal/page/src/state/store";
import { NewOrder, Order } from "../../terminal/page/src/wire/values";

// Compiled, never run: a member of the wire that is mistyped, missing or of another kind is an error.
export function mistyped(store: Store, order: Order, sent: NewOrder): unknown[] {
  return [
    // @ts-expect-error
    order.volumne,
    // @ts-expect-error
    order.status.length,
    // @ts-expect-error
    store.connection.request("order.new", { orderList: [{ ...sent, volume: "2" }] }),
    // @ts-expect-error
    store.connection.request("order.cancel", [{ index: 1, hashCode: 7 }]),
    // @ts-expect-error
    store.connection.request("order.nwe", []),
  ];
}
