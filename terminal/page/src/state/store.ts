import { Connection, LinkState, Push } from "../connection";
import { fillText } from "../describe";
import { Platform } from "../platform";
import { isRow, isTicket, kRoutes, Place } from "../route";
import { explained } from "../texts/refusals";
import { t } from "../texts/texts";
import { Ticket } from "../ticket/ticket";
import { Account, Fill, Login, Order, Price, Quote, Right } from "../wire/values";
import { Alerts } from "./alerts";
import { Asker, Pair } from "./asker";
import { Desk } from "./desk";
import { Drafts } from "./drafts";
import { Keeper } from "./kept";
import { HeldLists, ListName, Wish } from "./lists";
import { Notices } from "./notices";
import { Prefs, readPrefs, writePrefs } from "./prefs";
import { Prices } from "./prices";
import { Stars } from "./stars";
import { keptFor, Terminals } from "./terminals";
import { heldCodes, wantedLists } from "./wanted";
import { whyNot } from "./why";

export interface Views {
  changed(): void;
  notify(title: string, address: string): void; // by the system; a tap leads to the address
  moved(codes: ReadonlySet<number>): void; // the prices of these instruments
}

// All that the page knows and does; the views read it and call it.
export class Store {
  now: number;
  token: string;
  loginFailure = "";
  login: Login | null = null;
  account = 0; // whose rows are shown; 0: all
  prefs: Prefs;
  place: Place = { route: "assets", sheet: "" };
  readonly terminals: Terminals;
  readonly terminal: string; // by its name at the relay; empty without one
  readonly connection: Connection;
  readonly asker: Asker;
  readonly prices: Prices;
  seenCodes: number[] = []; // the instruments of the rows on the screen
  readonly keeper: Keeper;
  readonly desk: Desk;
  readonly notices: Notices;
  readonly alerts: Alerts;
  readonly drafts: Drafts;
  readonly stars: Stars;
  private views: Views = { changed: () => undefined, notify: () => undefined, moved: () => undefined };

  // `link`: the access in the address that was opened; empty if it has none.
  constructor(
    readonly platform: Platform,
    link = "",
  ) {
    this.now = platform.clock();
    this.terminals = new Terminals(platform);
    if (link !== "") this.terminals.keep(link);
    this.token = this.terminals.current;
    this.prefs = readPrefs(platform);
    this.terminal = this.terminals.name;
    const kept = keptFor(platform, this.terminal);
    this.drafts = new Drafts(kept);
    this.stars = new Stars(kept);
    this.notices = new Notices(kept, (fill) => fillText(fill, this.quote(fill.hashCode)), (title, address) => {
      if (this.prefs.vibrates) platform.vibrate();
      if (this.prefs.notifies && !platform.isSeen()) this.views.notify(title, address);
    });
    this.connection = new Connection(platform, {
      onState: () => this.onState(),
      onLogin: (login) => this.onLogin(login),
      onRefused: (message) => this.onRefused(message),
      onPush: (push) => this.onPush(push),
      onPrices: (rows) => this.onPrices(rows),
      onAlerts: (rows) => this.alerts.takePush(rows),
      onGap: () => this.asker.askAll(),
    });
    this.asker = new Asker(platform, this.connection, {
      wanted: () => this.wanted(),
      pair: () => this.pair(),
      wish: () => this.wish(),
      before: (name) => this.before(name),
      changed: () => this.update(),
      why: whyNot,
    });
    this.prices = new Prices(platform, this.connection, this.asker);
    this.alerts = new Alerts(platform, this.connection, this.asker, this.notices, () => this.update());
    this.keeper = new Keeper(kept, this.asker);
    this.keeper.restore(this.token);
    this.desk = new Desk(kept, {
      request: (topic, body, key) => this.connection.request(topic, body, key),
      why: whyNot,
      changed: () => this.update(),
      onTaken: (name) => this.tell(t("orderSent", name)),
      onFound: (name) => this.tell(t("found", name)),
      onRefused: (name, order) => this.tell(t("refusedLate", name, explained(order.note)), true),
    });
  }

  subscribe(views: Views): void {
    this.views = views;
  }

  update(): void {
    this.now = this.platform.clock();
    this.views.changed();
  }

  // ---- what the views read

  get link(): LinkState {
    return this.connection.state;
  }

  get lists(): HeldLists {
    return this.asker.lists;
  }

  may(right: Right): boolean {
    return this.login?.rights.includes(right) ?? false;
  }

  quote(hashCode: number): Quote | undefined {
    return this.prices.quote(hashCode);
  }

  accountOf(index: number): Account | undefined {
    return this.asker.of(this.lists.accounts.rows, index);
  }

  isStale(name: ListName): boolean {
    return this.asker.isStale(name, this.now);
  }

  // ---- what the page does

  // Another terminal begins with a new page, so that nothing of one is taken for the other's.
  logIn(token: string): void {
    this.terminals.keep(token);
    if (this.terminals.name !== this.terminal) return this.platform.reload();
    if (token !== this.token) this.keeper.drop();
    this.token = token;
    this.loginFailure = "";
    this.connection.start(token);
    this.update();
  }

  forget(): void {
    this.connection.stop();
    this.loseToken();
    this.account = 0;
    this.desk.clear();
    this.notices.clear();
    this.drafts.clear();
    this.stars.clear();
    this.update();
  }

  private loseToken(): void {
    this.terminals.drop(this.token);
    this.keeper.drop();
    this.alerts.clear();
    this.token = "";
    this.login = null;
  }

  // To be called when the page is hidden, which may be its end. Another tab may have forgotten the device.
  keep(): void {
    this.watch();
    if (this.terminals.all().includes(this.token)) this.keeper.keep(this.token);
  }

  prefer(change: Partial<Prefs>): void {
    const before = this.wish();
    this.prefs = { ...this.prefs, ...change };
    writePrefs(this.platform, this.prefs);
    this.wishChanged(before);
  }

  // The address has changed.
  show(place: Place): void {
    const isTicketNew = isTicket(place.sheet) && !isTicket(this.place.sheet);
    const isRowNew = isRow(place.sheet) && !isRow(this.place.sheet);
    if (place.route !== this.place.route) {
      this.asker.viewChanged();
      this.asker.makeDue([...kRoutes[place.route].lists, "credit"]);
      this.seenCodes = [];
    }
    this.place = place;
    if (isTicketNew && this.drafts.current?.hashCode === 0) this.drafts.drop(this.drafts.index);
    if (isTicketNew) this.asker.makeDue(["capital", "credit"]);
    if (isTicketNew || isRowNew) this.asker.makeDue(["positions", "quotes"]);
    this.watch();
    this.seeOrders();
    if (isTicketNew) this.asker.pairChanged();
    else this.asker.askDue();
    this.update();
  }

  pickAccount(index: number): void {
    const before = this.wish();
    this.account = index;
    this.wishChanged(before);
  }

  // The ticket as it is filled in now.
  draft(ticket: Ticket): void {
    const before = this.pair();
    this.drafts.set(ticket);
    const after = this.pair();
    if (before?.hashCode !== after?.hashCode || before?.index !== after?.index) this.asker.pairChanged();
    this.watch();
    this.update();
  }

  // At least once a second while the page is seen, and as soon as it is seen again. While it is hidden, a lost
  // connection matters only if the system is to notify.
  tick(): void {
    const now = this.platform.clock();
    const isSeen = this.platform.isSeen();
    if (isSeen || this.prefs.notifies) this.connection.check(now);
    if (!isSeen) return;
    this.desk.age();
    this.notices.age(now);
    this.seeOrders();
    this.asker.askDue();
    if (this.asker.isScrolling()) return; // ages can wait for the finger
    this.watch();
    this.update();
  }

  tell(text: string, isError = false): void {
    this.notices.tell(text, isError);
    this.update();
  }

  // ---- the lists

  private wanted(): Map<ListName, number> {
    const { desk, drafts, platform } = this;
    if (!this.may("see")) return new Map();
    if (!platform.isSeen()) return new Map(this.prefs.notifies ? [["fills", Infinity]] : []);
    return wantedLists(this.place, this.lists, (drafts.current?.amends ?? "") !== "", desk.isWaiting);
  }

  private wish(): Wish {
    const account = this.account || (this.lists.accounts.rows[0]?.index ?? 0);
    const quotes = this.place.route === "quotes" ? this.lists.quotes.rows : [];
    const codes = [...this.seenCodes, ...quotes.map((quote) => quote.hashCode)];
    return { account, period: this.prefs.period, now: this.platform.now(), codes };
  }

  private wishChanged(before: Wish): void {
    const { account, period } = this.wish();
    if (before.account !== account || before.period !== period) this.asker.drop("equity");
    this.asker.askDue();
    this.update();
  }

  private pair(): Pair | null {
    const draft = this.drafts.current;
    const isOpen = isTicket(this.place.sheet) && this.platform.isSeen();
    return draft === undefined || draft.hashCode === 0 || !isOpen ? null : draft;
  }

  private watch(): void {
    const isSeen = this.may("see") && this.platform.isSeen();
    const ticket = this.pair();
    const codes = [...(ticket === null ? [] : [ticket.hashCode]), ...this.seenCodes];
    void this.prices.watch(isSeen ? [...codes, ...heldCodes(this.place, this.lists, this.account)] : []);
  }

  private before(name: ListName): () => void {
    const unknown = this.desk.unknownKeys();
    if (name === "orders") return () => this.desk.see(this.lists.orders.rows, unknown);
    if (name === "fills") return () => this.seeFills();
    if (name === "capital") return () => this.prices.capitalCame();
    if (name === "quotes") return () => this.alerts.notice();
    const asked = this.wish();
    if (name === "equity") return () => this.wishChanged(asked); // it may be the answer to the one before
    return () => undefined;
  }

  private seeOrders(): void {
    const areSeen = this.platform.isSeen() && this.place.route.startsWith("orders") && this.token !== "";
    if (areSeen) this.notices.seeOrders(this.lists.fills.rows);
  }

  private seeFills(): void {
    this.notices.seeList(this.lists.fills.rows);
    this.seeOrders();
  }

  // ---- what the connection reports

  private onState(): void {
    if (this.link !== "online") {
      this.keep();
      this.prices.end();
    }
    this.update();
  }

  // The figures that no push brings need fresh lists, even if all missed pushes follow.
  private onLogin(login: Login): void {
    this.login = login;
    this.asker.onlineSince = this.platform.clock();
    this.asker.askAll();
    if (this.may("see")) void this.alerts.ask();
    this.update();
  }

  private onRefused(message: string): void {
    this.loseToken();
    this.loginFailure = message === "" ? t("loggedOut") : explained(message);
    this.update();
  }

  private onPush(push: Push): void {
    if (push.message !== "") this.notices.tell(explained(push.message), true);
    if (Array.isArray(push.data)) {
      if (push.topic === "order.push") this.onOrders(push.data as Order[]);
      if (push.topic === "trade.push") this.onFills(push.data as Fill[]);
      this.asker.askMoved();
    }
    this.update();
  }

  private onPrices(rows: Price[]): void {
    this.prices.take(rows);
    if (!this.asker.isScrolling()) this.views.moved(new Set(rows.map((row) => row.hashCode)));
  }

  private onOrders(pushed: Order[]): void {
    this.asker.takeOrders(pushed);
    this.desk.see(pushed, new Set());
  }

  private onFills(pushed: Fill[]): void {
    this.asker.takeFills(pushed);
    this.notices.seePush(pushed, this.lists.fills.rows);
    this.seeOrders();
  }
}
