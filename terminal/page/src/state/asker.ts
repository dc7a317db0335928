import { Connection, Reply } from "../connection";
import { Platform } from "../platform";
import { Fill, OfAccount, Order, Position, Quote, Rates, Status } from "../wire/values";
import { emptyLists, Held, HeldLists, kAsking, kMovedByOrders, ListName, Lists, Wish } from "./lists";
import { mergeFills, mergeOrders } from "./merge";

const kSlowMs = 5000;
const kScrollMs = 250; // no new rows while a list is moving under the finger ...
const kMostScrollMs = 5000; // ... for so long at most
const kAfterPushMs = 300; // one request for the pushes of one moment
const kRatesMs = 60_000;
const kWarning = ["quotes", "capital", "positions"] as const; // the lists that warn of mistakes

export interface Pair {
  index: number;
  hashCode: number;
}

export interface AskerEvents {
  wanted(): Map<ListName, number>; // the lists in sight, and how often each is requested; Infinity: only when due
  pair(): Pair | null; // whose rates are wanted
  wish(): Wish;
  before(name: ListName): () => void; // called as a list is requested; what it returns, once the rows are there
  changed(): void;
  why(reply: Reply): string;
}

// Requests the lists in their turns, and keeps the last answer of each.
export class Asker {
  readonly lists: HeldLists = emptyLists();
  onlineSince = 0;
  private quotesByCode = new Map<number, Quote>();
  private rates: { pair: Pair; rates: Rates; at: number } | null = null;
  private ratesAskedAt = 0;
  private pairAnswered: Pair | null = null; // whose rates came, or were refused
  private scrolledAt = -kMostScrollMs;
  private scrollingSince = 0;

  constructor(
    private readonly platform: Platform,
    private readonly connection: Connection,
    private readonly events: AskerEvents,
  ) {}

  quote(hashCode: number): Quote | undefined {
    return this.quotesByCode.get(hashCode);
  }

  ratesOf(pair: Pair): Rates | undefined {
    const { rates } = this;
    return rates?.pair.index === pair.index && rates.pair.hashCode === pair.hashCode ? rates.rates : undefined;
  }

  // Whether all that warns of mistakes has been answered, if only by a failure: another host may lack a topic.
  isInformed(pair: Pair, now: number): boolean {
    const { pairAnswered } = this;
    const hasRates = pairAnswered?.index === pair.index && pairAnswered.hashCode === pair.hashCode;
    return hasRates && kWarning.every((name) => this.isAnswered(name, now));
  }

  // A stale list whose request is under way is worth waiting for, unless the answer is late.
  private isAnswered(name: ListName, now: number): boolean {
    const { at, failure, isAsked, askedAt } = this.lists[name];
    return (at > 0 || failure !== "") && !(isAsked && now - askedAt <= kSlowMs && this.isStale(name, now));
  }

  // Whether warnings may be missing or wrong, since they rest on old figures.
  isOutdated(now: number): boolean {
    return kWarning.some((name) => this.isStale(name, now));
  }

  positionOf(pair: Pair): Position | undefined {
    return this.lists.positions.rows.find((row) => row.index === pair.index && row.hashCode === pair.hashCode);
  }

  // The working order of this number in this account.
  workingOrder(index: number, localOrderId: string): Order | undefined {
    return this.lists.orders.rows.find(
      (row) => row.index === index && row.localOrderId === localOrderId && row.status === Status.Working,
    );
  }

  of<Row extends OfAccount>(rows: Row[], index: number): Row | undefined {
    return rows.find((row) => row.index === index);
  }

  // Nothing that was known before the connection was lost counts as fresh.
  isStale(name: ListName, now: number): boolean {
    const list = this.lists[name];
    if (this.connection.state !== "online" || list.at < this.onlineSince || this.connection.isSilent(now)) return true;
    return (list.isAsked && now - list.askedAt > kSlowMs) || now - list.at > kAsking[name].every + kSlowMs;
  }

  clear(): void {
    Object.assign(this.lists, emptyLists());
    this.quotesByCode.clear();
    this.rates = null;
  }

  // The rows are of something else: none are shown until those that are wanted now have come.
  drop(name: ListName): void {
    Object.assign(this.lists[name], { rows: [], at: 0, dueAt: 0 });
  }

  makeDue(names: readonly ListName[], at = 0): void {
    for (const name of names) this.lists[name].dueAt = Math.min(this.lists[name].dueAt, at);
  }

  askNow(names: readonly ListName[]): void {
    this.makeDue(names);
    this.askDue();
  }

  askAll(): void {
    this.askNow(Object.keys(this.lists) as ListName[]);
  }

  takeOrders(pushed: Order[]): void {
    const list = this.lists.orders;
    if (list.at > 0) list.rows = mergeOrders(list.rows, pushed);
    this.askAgainIfAsked("orders");
  }

  takeFills(pushed: Fill[]): void {
    this.lists.fills.rows = mergeFills(this.lists.fills.rows, pushed);
    this.askAgainIfAsked("fills");
  }

  // The answer that is on its way may be older than the push.
  private askAgainIfAsked(name: ListName): void {
    if (this.lists[name].isAsked) this.makeDue([name], this.platform.clock() + kAfterPushMs);
  }

  // The figures that orders and fills move.
  askMoved(): void {
    this.makeDue(kMovedByOrders, this.platform.clock() + kAfterPushMs);
    this.platform.later(() => this.askDue(), kAfterPushMs);
  }

  scrolled(): void {
    const now = this.platform.clock();
    if (now - this.scrolledAt > kScrollMs) this.scrollingSince = now;
    this.scrolledAt = now;
  }

  // Another view is not under the finger yet.
  viewChanged(): void {
    this.scrolledAt = -kMostScrollMs;
  }

  askDue(): void {
    if (this.connection.state !== "online" || this.isScrolling()) return;
    const now = this.platform.clock();
    for (const [name, every] of this.events.wanted()) {
      const list = this.lists[name];
      if (!list.isAsked && now >= Math.min(list.dueAt, list.askedAt + every)) void this.ask(name);
    }
    void this.askRates(now);
  }

  isScrolling(): boolean {
    const now = this.platform.clock();
    return now - this.scrolledAt < kScrollMs && now - this.scrollingSince < kMostScrollMs;
  }

  private async ask(name: ListName): Promise<void> {
    const { topic, body } = kAsking[name];
    const list = this.lists[name];
    const data = body === undefined ? [] : body(this.lists, this.events.wish());
    if (data === null) return;
    const done = this.events.before(name);
    list.isAsked = true;
    list.askedAt = this.platform.clock();
    list.dueAt = Infinity;
    const reply = await this.connection.request(topic, data as never);
    list.isAsked = false;
    if (reply.kind === "lost" || reply.kind === "unsent") {
      list.dueAt = 0;
    } else {
      list.failure = this.events.why(reply);
      if (reply.kind === "done") this.take(name, reply.data, this.platform.clock());
      if (reply.kind === "done") done();
    }
    this.askDue();
    this.events.changed();
  }

  // An answer, or what was kept of one.
  take<Name extends ListName>(name: Name, rows: unknown, at: number): void {
    const list = this.lists[name] as Held<Lists[Name]>;
    list.rows = rows as Lists[Name];
    list.at = at;
    if (name === "quotes") this.quotesByCode = new Map(this.lists.quotes.rows.map((quote) => [quote.hashCode, quote]));
  }

  private async askRates(now: number): Promise<void> {
    const pair = this.events.pair();
    if (pair === null || now < this.ratesAskedAt + kSlowMs) return;
    if (this.ratesOf(pair) !== undefined && now < (this.rates?.at ?? 0) + kRatesMs) return;
    this.ratesAskedAt = now;
    const reply = await this.connection.request("order.rates", { index: pair.index, hashCode: pair.hashCode });
    if (reply.kind !== "lost" && reply.kind !== "unsent") this.pairAnswered = pair;
    if (reply.kind === "done") this.rates = { pair, rates: reply.data, at: this.platform.clock() };
    this.events.changed();
  }

  // Another instrument has been picked: its rates are wanted at once.
  pairChanged(): void {
    this.ratesAskedAt = -kSlowMs;
    this.askDue();
  }
}
