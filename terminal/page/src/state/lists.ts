import { codesOf } from "../exposure";
import { Period, rangeOf } from "../history";
import * as wire from "../wire/values";

// The lists that the page keeps, and how each is requested.

export interface Lists {
  accounts: wire.Account[];
  capital: wire.Capital[];
  classes: wire.ClassRow[];
  credit: wire.CreditInfo[];
  margin: wire.MarginRates[];
  positions: wire.Position[];
  orders: wire.Order[];
  fills: wire.Fill[];
  monitor: wire.MonitorRow[];
  sync: wire.SyncOrder[];
  manual: wire.ManualPosition[];
  quotes: wire.Quote[];
  equity: wire.EquityPoint[];
  curves: wire.QuoteCurve[];
}

// What the user has picked that a request depends on.
export interface Wish {
  account: number; // whose history is shown; 0: not known yet
  period: Period;
  now: number; // milliseconds since 1970
  codes: readonly number[]; // of the instruments that are shown beside those held, the most important first
}

export type ListName = keyof Lists;

export interface Held<Rows> {
  rows: Rows;
  at: number; // when it was last known to be right, by clock(); 0: never
  askedAt: number;
  dueAt: number; // before its turn; Infinity: in its turn
  isAsked: boolean;
  failure: string;
}

export type HeldLists = { [Name in ListName]: Held<Lists[Name]> };

interface Asking {
  topic: keyof wire.Bodies & keyof wire.Replies;
  every: number; // milliseconds between two requests while the list is shown
  body?: (held: HeldLists, wish: Wish) => object | null; // null: not yet. Without it: all accounts
}

function creditAccounts(held: HeldLists): unknown[] | null {
  const accounts = held.accounts.rows.filter((account) => account.marketType === wire.Market.Credit);
  return held.accounts.at === 0 ? null : accounts.map((account) => account.index);
}

function marginQueries(held: HeldLists): unknown[] | null {
  if (held.accounts.at === 0 || held.quotes.at === 0) return null;
  const futures = held.quotes.rows.filter((quote) => quote.codeClass === wire.CodeClass.Future);
  const accounts = held.accounts.rows.filter((account) => account.marketType === wire.Market.Futures);
  return accounts.map((account) => ({ index: account.index, hashCodes: futures.map((quote) => quote.hashCode) }));
}

function equityQuery(_: HeldLists, { account, period, now }: Wish): object | null {
  return account === 0 ? null : { index: account, ...rangeOf(period, now), points: kHistoryPoints };
}

function curveQuery(held: HeldLists, { codes }: Wish): object | null {
  if (held.positions.at === 0) return null;
  const hashCodes = [...new Set([...codes, ...codesOf(held.positions.rows)])].slice(0, kMostCurves);
  return { hashCodes, points: kCurvePoints };
}

const kHistoryPoints = 240;
const kCurvePoints = 48;
const kMostCurves = 200; // of one request
const kMinute = 60_000;

// Orders, fills and prices are pushed, and lead to what they change.
export const kAsking: { [Name in ListName]: Asking } = {
  accounts: { topic: "account.list", every: kMinute },
  capital: { topic: "capital.list", every: kMinute },
  classes: { topic: "position.codetype.list", every: kMinute },
  credit: { topic: "creditinfo.list", every: kMinute, body: creditAccounts },
  margin: { topic: "marginrate.list", every: kMinute, body: marginQueries },
  positions: { topic: "position.list", every: kMinute },
  orders: { topic: "order.list", every: kMinute },
  fills: { topic: "trader.list", every: kMinute },
  monitor: { topic: "monitor.list", every: kMinute },
  sync: { topic: "monitor.sync.order.list", every: kMinute },
  manual: { topic: "monitor.manual.list", every: kMinute },
  quotes: { topic: "quote.list", every: kMinute },
  equity: { topic: "equity.list", every: kMinute, body: equityQuery },
  curves: { topic: "quote.curve", every: 5 * kMinute, body: curveQuery }, // they end at the row's price meanwhile
};

export const kOrdersWhileUnknown = 3000; // while an order's outcome is unknown

// The lists that an order or a fill changes beside its own.
export const kMovedByOrders: readonly ListName[] = ["capital", "positions", "classes", "credit", "monitor", "sync"];

export function emptyLists(): HeldLists {
  const names = Object.keys(kAsking) as ListName[];
  const empty = () => ({ rows: [], at: 0, askedAt: 0, dueAt: 0, isAsked: false, failure: "" });
  return Object.fromEntries(names.map((name) => [name, empty()])) as unknown as HeldLists;
}
