import { clock } from "./clock";
import { Connection, LinkState, Reply } from "./connection";
import { deviceName, randomText, recall, remember } from "./device";
import { emptyLists, Held, HeldLists, kAsking, kMovedByOrders, ListName, Lists } from "./lists";
import { mergeFills, mergeOrders } from "./merge";
import { ageing, Outgoing, readOutgoing, settle, sourceOf } from "./outgoing";
import { kRoutes, readRoute, Route } from "./route";
import { Language, t, useLanguage } from "./texts";
import { Account, Fill, Frame, Login, NewOrder, Order, Quote, Right } from "./wire";

export interface Notice {
  id: number;
  text: string;
  isError: boolean; // stays until it is dismissed
  at: number;
}

// Of a request: why it failed, empty on success; and whether that can be relied upon.
export interface Outcome {
  failure: string;
  isKnown: boolean;
}

const kQuotesWhileTrading = 2000;
const kOrdersWhileUnknown = 3000;
const kAfterPushMs = 300; // one question for the pushes of one moment
const kNoticeMs = 5000;
const kMostNotices = 3;
const kLateMs = 5000;

// All that the page knows, and all that it does; the views read it and call it.
class Store {
  now = clock();
  route: Route = readRoute(location.hash);
  token = recall("token");
  loginFailure = "";
  login: Login = {};
  account = 0; // whose rows are shown; 0: all
  isTrading = false; // the ticket is open
  notices: Notice[] = [];
  outgoing: Outgoing[] = readOutgoing(recall("outgoing"));
  readonly lists: HeldLists = emptyLists();
  readonly connection: Connection;
  private onlineSince = 0;
  private quotesByCode = new Map<number, Quote>();
  private lastNotice = 0;
  private changed: () => void = () => undefined;

  constructor() {
    const url = `${location.protocol === "https:" ? "wss" : "ws"}://${location.host}/ws`;
    this.connection = new Connection(url, deviceName(), {
      onState: () => this.changed(),
      onLogin: (login) => this.onLogin(login),
      onRefused: (message) => this.onRefused(message),
      onPush: (push) => this.onPush(push),
      onGap: () => this.askAllAnew(),
    });
  }

  subscribe(changed: () => void): void {
    this.changed = changed;
  }

  // ---- what the views read

  get link(): LinkState {
    return this.connection.state;
  }

  may(right: Right): boolean {
    return this.login.rights?.includes(right) ?? true;
  }

  quote(hashCode: number): Quote | undefined {
    return this.quotesByCode.get(hashCode);
  }

  accountOf(index: number): Account | undefined {
    return this.lists.accounts.rows.find((account) => account.index === index);
  }

  // Of the account that is picked.
  picked<Row extends { index: number }>(rows: Row[]): Row[] {
    return this.account === 0 ? rows : rows.filter((row) => row.index === this.account);
  }

  // Nothing that was known before the connection was lost counts as fresh.
  isStale(name: ListName): boolean {
    const list = this.lists[name];
    const late = 2 * kAsking[name].every + kLateMs;
    return this.link !== "online" || list.at < this.onlineSince || this.now - list.at > late;
  }

  // ---- what the page does

  logIn(token: string): void {
    this.token = token;
    this.loginFailure = "";
    remember("token", token);
    this.connection.start(token);
    this.changed();
  }

  forget(): void {
    this.connection.stop();
    this.token = "";
    this.login = {};
    this.outgoing = [];
    this.notices = [];
    remember("token", "");
    remember("outgoing", "");
    Object.assign(this.lists, emptyLists());
    this.changed();
  }

  speak(language: Language): void {
    remember("language", language);
    useLanguage(language);
    this.changed();
  }

  go(route: Route): void {
    this.route = route;
    this.askDue();
    this.changed();
  }

  pickAccount(index: number): void {
    this.account = index;
    this.changed();
  }

  trade(isOpen: boolean): void {
    this.isTrading = isOpen;
    if (isOpen) this.makeDue(["quotes"]);
    this.askDue();
    this.changed();
  }

  // Each second while the page can be seen, and as soon as it is seen again.
  tick(): void {
    this.now = clock();
    this.connection.check(this.now);
    this.setOutgoing(ageing(this.outgoing, Date.now()));
    this.notices = this.notices.filter((notice) => notice.isError || this.now - notice.at < kNoticeMs);
    this.askDue();
    this.changed();
  }

  refresh(name: ListName): void {
    this.makeDue([name]);
    this.askDue();
  }

  tell(text: string, isError = false): void {
    const notice = { id: ++this.lastNotice, text, isError, at: clock() };
    const all = [...this.notices, notice];
    const dropped = all.length > kMostNotices ? (all.find((each) => !each.isError) ?? all[0]) : null;
    this.notices = all.filter((each) => each !== dropped);
    this.changed();
  }

  dismiss(notice: Notice): void {
    this.notices = this.notices.filter((each) => each !== notice);
    this.changed();
  }

  // A request that changes something and whose outcome its list shows.
  async act(topic: string, body: unknown, touched: ListName[]): Promise<Outcome> {
    const reply = await this.connection.request(topic, body, randomText(16));
    this.makeDue(touched);
    this.askDue();
    return { failure: whyNot(reply), isKnown: reply.kind !== "lost" && reply.kind !== "garbled" };
  }

  // Sends a new order, remembered on the device before it goes out. Returns why it failed; empty too where the reply
  // was lost: then it stands among `outgoing`.
  placeOrder(order: Omit<NewOrder, "source">, name: string): Promise<string> {
    const key = randomText(16);
    const sent = { ...order, source: sourceOf(key) };
    this.setOutgoing([...this.outgoing, { key, order: sent, name, sentAt: Date.now(), state: "sending", failure: "" }]);
    return this.send(key);
  }

  sendAgain(outgoing: Outgoing): Promise<string> {
    this.update(outgoing.key, { state: "sending", sentAt: Date.now(), failure: "" });
    return this.send(outgoing.key, true);
  }

  discard(outgoing: Outgoing): void {
    this.setOutgoing(this.outgoing.filter((each) => each.key !== outgoing.key));
    this.changed();
  }

  private async send(key: string, isAgain = false): Promise<string> {
    const outgoing = this.outgoing.find((each) => each.key === key);
    if (outgoing === undefined) return "";
    const reply = await this.connection.request("order.new", { orderList: [outgoing.order] }, key);
    if (reply.kind === "lost" || reply.kind === "garbled") {
      this.update(key, { state: "unknown", failure: reply.kind === "garbled" ? whyNot(reply) : "" });
      return "";
    }
    const failure = whyNot(reply);
    if (failure !== "" && isAgain) {
      this.update(key, { state: "missing", failure });
    } else {
      this.discard(outgoing);
    }
    if (failure === "") this.tell(t("orderSent", outgoing.name));
    return failure;
  }

  private update(key: string, change: Partial<Outgoing>): void {
    this.setOutgoing(this.outgoing.map((each) => (each.key === key ? { ...each, ...change } : each)));
    this.changed();
  }

  private setOutgoing(outgoing: Outgoing[]): void {
    if (outgoing === this.outgoing) return;
    this.outgoing = outgoing;
    remember("outgoing", outgoing.length === 0 ? "" : JSON.stringify(outgoing));
  }

  // Takes those off the list of unknown ones that a list or push of orders shows.
  private settleOutgoing(orders: Order[], asked: Set<string>): void {
    const before = this.outgoing;
    this.setOutgoing(settle(before, orders, asked, Date.now()));
    const left = new Set(this.outgoing.map((each) => each.key));
    for (const each of before) {
      if (!left.has(each.key) && each.state !== "sending") this.tell(t("found", each.name));
    }
  }

  // ---- the lists

  private wanted(): Map<ListName, number> {
    const wanted = new Map<ListName, number>();
    for (const name of ["accounts", "quotes", ...kRoutes[this.route].lists] as ListName[]) {
      wanted.set(name, kAsking[name].every);
    }
    if (this.isTrading) wanted.set("quotes", kQuotesWhileTrading);
    if (this.outgoing.some((each) => each.state === "unknown")) wanted.set("orders", kOrdersWhileUnknown);
    return wanted;
  }

  private askDue(): void {
    if (this.link !== "online" || document.visibilityState !== "visible" || !this.may("see")) return;
    const now = clock();
    for (const [name, every] of this.wanted()) {
      const list = this.lists[name];
      if (!list.isAsked && now >= Math.min(list.dueAt, list.askedAt + every)) void this.ask(name);
    }
  }

  private async ask<Name extends ListName>(name: Name): Promise<void> {
    const { topic, body } = kAsking[name];
    const list = this.lists[name] as Held<Lists[Name]>;
    const data = body === undefined ? [] : body(this.lists);
    if (data === null) return;
    const unknown = new Set(this.outgoing.filter((each) => each.state === "unknown").map((each) => each.key));
    list.isAsked = true;
    list.askedAt = clock();
    list.dueAt = Infinity;
    const reply = await this.connection.request(topic, data);
    list.isAsked = false;
    if (reply.kind === "lost" || reply.kind === "unsent") {
      list.dueAt = 0;
    } else {
      list.failure = whyNot(reply);
      if (reply.kind === "done") this.take(name, (reply.data ?? []) as Lists[Name], unknown);
    }
    this.askDue();
    this.changed();
  }

  private take<Name extends ListName>(name: Name, rows: Lists[Name], unknown: Set<string>): void {
    const list = this.lists[name] as Held<Lists[Name]>;
    list.rows = rows;
    list.at = this.now = clock();
    if (name === "quotes") this.quotesByCode = new Map(this.lists.quotes.rows.map((quote) => [quote.hashCode, quote]));
    if (name === "orders") this.settleOutgoing(this.lists.orders.rows, unknown);
  }

  private makeDue(names: readonly ListName[], at = 0): void {
    for (const name of names) this.lists[name].dueAt = Math.min(this.lists[name].dueAt, at);
  }

  private askAllAnew(): void {
    this.makeDue(Object.keys(this.lists) as ListName[]);
    this.askDue();
  }

  // ---- what the connection tells

  // Resumed pushes tell what happened meanwhile; the figures that no push brings need the fresh lists all the same.
  private onLogin(login: Login): void {
    this.login = login;
    this.onlineSince = clock();
    this.askAllAnew();
    this.changed();
  }

  private onRefused(message: string): void {
    this.token = "";
    remember("token", "");
    this.loginFailure = message || t("loggedOut");
    this.isTrading = false;
    this.changed();
  }

  private onPush(push: Frame): void {
    if (push.topic === "terminal.notice") return this.tell(push.message, true);
    if (push.message !== "") this.tell(push.message, true);
    if (!Array.isArray(push.data)) return;
    if (push.topic === "order.push") this.onOrders(push.data as Order[]);
    if (push.topic === "trade.push") this.onFills(push.data as Fill[]);
    this.makeDue(kMovedByOrders, clock() + kAfterPushMs);
    window.setTimeout(() => this.askDue(), kAfterPushMs);
    this.changed();
  }

  private onOrders(pushed: Order[]): void {
    const list = this.lists.orders;
    if (list.at > 0) list.rows = mergeOrders(list.rows, pushed);
    if (list.isAsked) this.makeDue(["orders"], clock() + kAfterPushMs); // the answer may be older than this push
    this.settleOutgoing(pushed, new Set());
  }

  private onFills(pushed: Fill[]): void {
    const list = this.lists.fills;
    if (list.at > 0) list.rows = mergeFills(list.rows, pushed);
    if (list.isAsked) this.makeDue(["fills"], clock() + kAfterPushMs);
    for (const fill of pushed) this.tell(t("filled", `${fill.codeName || fill.codeExch} × ${fill.volume}`));
  }
}

// Empty where it was done.
function whyNot(reply: Reply): string {
  switch (reply.kind) {
    case "done":
      return "";
    case "failed":
      return reply.message;
    case "garbled":
      return t("garbled", reply.text.slice(0, 200));
    default:
      return t(reply.kind);
  }
}

export const store = new Store();
