import { ListName } from "./state/lists";
import { TextName } from "./texts/texts";

// The views by their address, "#/orders/fills", with the lists that each shows.

export type Route =
  | "assets"
  | "assets/equity"
  | "assets/classes"
  | "assets/credit"
  | "assets/margin"
  | "positions"
  | "quotes"
  | "orders"
  | "orders/fills"
  | "monitor"
  | "monitor/sync"
  | "monitor/manual"
  | "settings";

// What the views need of the address.
export interface Place {
  route: Route;
  sheet: string; // the dialog that is open, "trade" for one; empty if none
}

export const kRoutes: { [Name in Route]: { title: TextName; lists: ListName[] } } = {
  assets: { title: "accounts", lists: ["capital", "positions"] },
  "assets/equity": { title: "equity", lists: ["equity"] },
  "assets/classes": { title: "exposure", lists: ["positions", "classes"] },
  "assets/credit": { title: "credit", lists: ["credit"] },
  "assets/margin": { title: "margin", lists: ["margin"] },
  positions: { title: "positions", lists: ["positions", "capital", "curves"] },
  quotes: { title: "quotes", lists: ["quotes", "positions", "curves"] },
  orders: { title: "orders", lists: ["orders"] },
  "orders/fills": { title: "fills", lists: ["fills"] },
  monitor: { title: "differences", lists: ["monitor"] },
  "monitor/sync": { title: "sync", lists: ["sync"] },
  "monitor/manual": { title: "manual", lists: ["manual"] },
  settings: { title: "settings", lists: [] },
};

export const isTicket = (sheet: string): boolean => sheet === "trade" || sheet === "review";
export const isRow = (sheet: string): boolean => sheet.startsWith("row=");

export type Section = "assets" | "positions" | "quotes" | "orders" | "monitor" | "settings";

export const sectionOf = (route: Route): Section => route.split("/")[0] as Section;

export function siblingsOf(route: Route): Route[] {
  return (Object.keys(kRoutes) as Route[]).filter((each) => sectionOf(each) === sectionOf(route));
}

// "#/orders/fills+row=1:42" is the view of fills with the dialog "row=1:42" over it.
export function readAddress(hash: string): { route: Route; sheet: string } {
  const [view, sheet] = decodeURIComponent(hash).replace(/^#\/?/, "").split("+");
  return { route: view in kRoutes ? (view as Route) : "assets", sheet: sheet ?? "" };
}

export function addressOf(route: Route, sheet: string): string {
  return sheet === "" ? `#/${route}` : `#/${route}+${encodeURIComponent(sheet)}`;
}
