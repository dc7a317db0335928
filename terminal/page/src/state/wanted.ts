import { isRow, isTicket, kRoutes, Place, Route } from "../route";
import { Market, OfAccount, Position } from "../wire/values";
import { HeldLists, kAsking, kOrdersWhileUnknown, ListName } from "./lists";

// The lists that are in sight, and how often each is requested. `isWaiting`: the list of orders is needed soon.
export function wantedLists(place: Place, lists: HeldLists, isAmending: boolean, isWaiting: boolean): Map<ListName, number> {
  const names: ListName[] = ["accounts", "quotes", "fills", ...kRoutes[place.route].lists];
  const hasCredit = lists.accounts.rows.some((account) => account.marketType === Market.Credit);
  if (place.route === "assets" && hasCredit) names.push("credit"); // for its meters
  if (isTicket(place.sheet)) {
    names.push("capital", "positions");
    if (lists.credit.askedAt === 0 || lists.credit.rows.length > 0) names.push("credit");
    if (isAmending) names.push("orders");
  }
  if (isRow(place.sheet)) names.push("positions"); // its buttons close what is held
  const wanted = new Map(names.map((name) => [name, kAsking[name].every]));
  if (isWaiting) wanted.set("orders", kOrdersWhileUnknown);
  return wanted;
}

export function ofAccount<Row extends object>(rows: Row[], account: number): Row[] {
  return account === 0 ? rows : rows.filter((row) => (row as unknown as OfAccount).index === account);
}

export const isHeld = (row: Position): boolean => row.longPosition + row.shortPosition > 0;

const kSums: readonly Route[] = ["assets", "assets/classes", "positions"];

// The instruments whose prices the view adds up. `account`: whose rows are shown, 0 for all.
export function heldCodes(place: Place, lists: HeldLists, account: number): number[] {
  if (!kSums.includes(place.route)) return [];
  const shown = ofAccount(lists.positions.rows, place.route === "positions" ? account : 0);
  return shown.filter(isHeld).map((row) => row.hashCode);
}
