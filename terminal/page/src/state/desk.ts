import { isKnown, Reply } from "../connection";
import { Platform } from "../platform";
import { t } from "../texts/texts";
import { Bodies, CancelOrder, NewOrder, Order, Replies, Status } from "../wire/values";
import { orderName } from "./merge";
import { ageing, Outgoing, readOutgoing, settle, sourceOf } from "./outgoing";

const kStepMs = 10_000; // how long the second step of an amendment or a reversal waits for the first

export type Draft = Omit<NewOrder, "source">;

export interface DeskEvents {
  request<Topic extends keyof Bodies & keyof Replies>(
    topic: Topic,
    body: Bodies[Topic],
    key: string,
  ): Promise<Reply<Replies[Topic]>>;
  why(reply: Reply): string; // empty if it was done
  changed(): void;
  onTaken(name: string): void;
  onFound(name: string): void; // an order without a known outcome has shown up
  onRefused(name: string, order: Order): void; // one of those, or one that had been taken, was refused
}

// The outcome of an order in two steps. "open": the first step's outcome was not seen, and nothing followed it.
export type StepOutcome =
  | { kind: "done" }
  | { kind: "failed"; failure: string } // the first step
  | { kind: "refused"; failure: string } // the second, after the first was done
  | { kind: "open" };

interface Watch {
  isIt: (order: Order) => boolean;
  settle: (order: Order | null) => void;
}

// Sends orders and cancels, and remembers on the device each order whose outcome it has not seen.
export class Desk {
  outgoing: Outgoing[];
  private watches: Watch[] = [];
  private cancelling = new Set<string>();
  private taken = new Map<string, string>(); // names of the orders that the terminal took, by source

  constructor(
    private readonly platform: Platform,
    private readonly events: DeskEvents,
  ) {
    this.outgoing = readOutgoing(platform.recall("outgoing"));
  }

  // Whether the list of orders is needed soon.
  get isWaiting(): boolean {
    return this.watches.length > 0 || this.outgoing.some((each) => each.state === "unknown");
  }

  // Whether an order of this instrument and side has no outcome yet. Another one may be the same by mistake.
  hasUnsettled(order: { index: number; hashCode: number; side: number }): boolean {
    const { index, hashCode, side } = order;
    return this.outgoing.some(
      ({ order: each }) => each.index === index && each.hashCode === hashCode && each.side === side,
    );
  }

  unknownKeys(): Set<string> {
    return new Set(this.outgoing.filter((each) => each.state === "unknown").map((each) => each.key));
  }

  clear(): void {
    this.set([]);
    for (const watch of this.watches.splice(0)) watch.settle(null);
  }

  age(): void {
    this.set(ageing(this.outgoing, this.platform.now()));
  }

  // Returns why the order was refused; empty also if the reply was lost: then it is among `outgoing`.
  place(order: Draft, name: string): Promise<string> {
    return this.send(this.keep(order, name));
  }

  sendAgain(outgoing: Outgoing): Promise<string> {
    this.update(outgoing.key, { state: "sending", sentAt: this.platform.now(), failure: "" });
    return this.send(outgoing.key, true);
  }

  discard(outgoing: Outgoing): void {
    this.set(this.outgoing.filter((each) => each.key !== outgoing.key));
    this.events.changed();
  }

  // Returns why not; empty if the terminal took the request, or if this order's cancel is on its way already.
  async cancel(order: Order): Promise<string> {
    const name = orderName(order);
    if (this.cancelling.has(name)) return "";
    this.cancelling.add(name);
    const reply = await this.events.request("order.cancel", [cancelOf(order)], this.platform.randomText(16));
    this.cancelling.delete(name);
    return this.events.why(reply);
  }

  // Cancels `order` and, once it is known to be cancelled, places `next`.
  async amend(order: Order, next: Draft, name: string): Promise<StepOutcome> {
    const ended = this.until((each) => orderName(each) === orderName(order));
    const failure = await this.cancel(order);
    if (failure !== "") return { kind: "failed", failure };
    const last = await ended;
    const filled = (last?.fillVolume ?? 0) - order.fillVolume;
    if (last !== null && filled > 0) return { kind: "failed", failure: t("filledMeanwhile", filled) };
    return this.follow(last, Status.Cancelled, next, name);
  }

  // Places `closing` and, once it is known to be filled, `opening`.
  async reverse(closing: Draft, opening: Draft, names: readonly [string, string]): Promise<StepOutcome> {
    const key = this.keep(closing, names[0]);
    const ended = this.until((each) => each.source === sourceOf(key));
    const failure = await this.send(key);
    if (failure !== "") return { kind: "failed", failure };
    return this.follow(await ended, Status.Filled, opening, names[1]);
  }

  // Rows of a list or a push of orders. Those in `asked` were unknown when the list was requested.
  see(orders: Order[], asked: Set<string>): void {
    const before = this.outgoing;
    this.set(settle(before, orders, asked, this.platform.now()));
    const left = new Set(this.outgoing.map((each) => each.key));
    const refused = new Map(orders.filter((each) => each.status === Status.Refused).map((each) => [each.source, each]));
    for (const each of before) {
      const row = refused.get(each.order.source);
      if (left.has(each.key) || each.state === "sending") continue;
      if (row === undefined) this.events.onFound(each.name);
      else this.events.onRefused(each.name, row);
    }
    for (const [source, row] of refused) {
      const name = this.taken.get(source);
      if (name !== undefined) this.events.onRefused(name, row);
      this.taken.delete(source);
    }
    for (const watch of [...this.watches]) {
      const order = orders.find((each) => each.status !== Status.Working && watch.isIt(each));
      if (order !== undefined) this.end(watch, order);
    }
  }

  private async follow(order: Order | null, wanted: Status, next: Draft, name: string): Promise<StepOutcome> {
    if (order === null) return { kind: "open" };
    if (order.status !== wanted) return { kind: "failed", failure: order.note };
    const failure = await this.place(next, name);
    return failure === "" ? { kind: "done" } : { kind: "refused", failure };
  }

  // The order once it no longer works; null if that is not known in time.
  private until(isIt: (order: Order) => boolean): Promise<Order | null> {
    return new Promise((settle) => {
      const watch = { isIt, settle };
      this.watches.push(watch);
      this.platform.later(() => this.end(watch, null), kStepMs);
    });
  }

  private end(watch: Watch, order: Order | null): void {
    this.watches = this.watches.filter((each) => each !== watch);
    watch.settle(order);
  }

  // Stores the order before it is sent, so that a page that is closed does not forget it. Returns its key.
  private keep(order: Draft, name: string): string {
    const key = this.platform.randomText(16);
    const sent = { ...order, source: sourceOf(key) };
    const sentAt = this.platform.now();
    this.set([...this.outgoing, { key, order: sent, name, sentAt, state: "sending", failure: "" }]);
    return key;
  }

  private async send(key: string, isAgain = false): Promise<string> {
    const outgoing = this.outgoing.find((each) => each.key === key);
    if (outgoing === undefined) return "";
    const reply = await this.events.request("order.new", { orderList: [outgoing.order] }, key);
    const failure = reply.kind === "lost" ? "" : this.events.why(reply);
    if (!isKnown(reply) && !(isAgain && reply.kind === "unclear")) {
      this.update(key, { state: "unknown", failure });
      return "";
    }
    if (failure !== "" && isAgain) this.update(key, { state: "missing", failure });
    else this.discard(outgoing);
    if (failure !== "") return failure;
    this.taken.set(outgoing.order.source, outgoing.name);
    this.events.onTaken(outgoing.name);
    return "";
  }

  private update(key: string, change: Partial<Outgoing>): void {
    this.set(this.outgoing.map((each) => (each.key === key ? { ...each, ...change } : each)));
    this.events.changed();
  }

  private set(outgoing: Outgoing[]): void {
    if (outgoing === this.outgoing) return;
    this.outgoing = outgoing;
    this.platform.remember("outgoing", outgoing.length === 0 ? "" : JSON.stringify(outgoing));
  }
}

function cancelOf({ index, localOrderId, hashCode }: Order): CancelOrder {
  return { index, localOrderId, hashCode };
}
