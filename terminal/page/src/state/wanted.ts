import { isRow, isTicket, kRoutes, Place } from "../route";
import { Market } from "../wire/values";
import { HeldLists, kAsking, kOrdersWhileUnknown, ListName } from "./lists";

// The lists that are in sight, and how often each is requested. `isWaiting`: the list of orders is needed soon.
export function wantedLists(place: Place, lists: HeldLists, isAmending: boolean, isWaiting: boolean): Map<ListName, number> {
  const wanted = new Map<ListName, number>();
  for (const name of ["accounts", "quotes", "fills", ...kRoutes[place.route].lists] as ListName[]) {
    wanted.set(name, kAsking[name].every);
  }
  const hasCredit = lists.accounts.rows.some((account) => account.marketType === Market.Credit);
  if (place.route === "assets" && hasCredit) wanted.set("credit", kAsking.credit.every); // for its meters
  if (isTicket(place.sheet)) {
    for (const name of ["quotes", "capital", "positions"] as const) {
      wanted.set(name, kAsking[name].whileTrading ?? kAsking[name].every);
    }
    if (lists.credit.askedAt === 0 || lists.credit.rows.length > 0) wanted.set("credit", 5000);
    if (isAmending) wanted.set("orders", kAsking.orders.every);
  }
  if (isRow(place.sheet)) wanted.set("positions", kAsking.positions.every); // its buttons close what is held
  if (isWaiting) wanted.set("orders", kOrdersWhileUnknown);
  return wanted;
}
