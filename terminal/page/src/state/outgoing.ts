import { NewOrder, Order } from "../wire/values";

// An order that was sent and whose outcome has not been seen yet.
//   sending: the reply is awaited.        unknown: the reply was lost; "order.list" will show it.
//   missing: "order.list" does not have it. It leaves this list as soon as it shows up, or when it is discarded.
//   untold: the day changed before "order.list" could show it; the list holds one day's orders.
export interface Outgoing {
  key: string; // the same for each attempt
  order: NewOrder; // to the byte, for each attempt
  name: string;
  sentAt: number;
  state: "sending" | "unknown" | "missing" | "untold";
  failure: string; // the answer to another attempt
}

const kSlowMs = 5000;

// The order's source text. It contains the key, by which the order is found in the terminal's list.
export function sourceOf(key: string): string {
  return `web ${key}`;
}

// The orders that the list does not show. Those in `asked` were unknown when it was requested, so they are missing.
export function settle(outgoing: Outgoing[], orders: Order[], asked: Set<string>, now: number): Outgoing[] {
  if (outgoing.length === 0) return outgoing;
  const today = new Date(now).toDateString();
  const sources = new Set(orders.map((order) => order.source));
  return outgoing
    .filter((each) => !sources.has(each.order.source))
    .map((each) => {
      if (!asked.has(each.key)) return each;
      return { ...each, state: new Date(each.sentAt).toDateString() === today ? "missing" : "untold" };
    });
}

// The same orders; those whose reply takes too long become unknown.
export function ageing(outgoing: Outgoing[], now: number): Outgoing[] {
  const late = (each: Outgoing) => each.state === "sending" && now - each.sentAt > kSlowMs;
  return outgoing.some(late) ? outgoing.map((each) => (late(each) ? { ...each, state: "unknown" } : each)) : outgoing;
}

// The orders that another run of the page left: nothing waits for their replies any more.
export function readOutgoing(text: string): Outgoing[] {
  if (text === "") return [];
  try {
    return (JSON.parse(text) as Outgoing[]).map((each) => ({ ...each, state: "unknown" }));
  } catch {
    return [];
  }
}
