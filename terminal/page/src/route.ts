import { ListName } from "./lists";
import { TextName } from "./texts";

// The views by their address, "#/orders/fills", with the lists that each shows.

export type Route =
  | "assets"
  | "assets/classes"
  | "assets/credit"
  | "assets/margin"
  | "positions"
  | "orders"
  | "orders/fills"
  | "monitor"
  | "monitor/sync"
  | "monitor/manual"
  | "settings";

export const kRoutes: { [Name in Route]: { title: TextName; lists: ListName[] } } = {
  assets: { title: "accounts", lists: ["capital"] },
  "assets/classes": { title: "classes", lists: ["classes"] },
  "assets/credit": { title: "credit", lists: ["credit"] },
  "assets/margin": { title: "margin", lists: ["margin"] },
  positions: { title: "positions", lists: ["positions"] },
  orders: { title: "orders", lists: ["orders"] },
  "orders/fills": { title: "fills", lists: ["fills"] },
  monitor: { title: "differences", lists: ["monitor"] },
  "monitor/sync": { title: "sync", lists: ["sync"] },
  "monitor/manual": { title: "manual", lists: ["manual"] },
  settings: { title: "settings", lists: [] },
};

export type Section = "assets" | "positions" | "orders" | "monitor" | "settings";

export const sectionOf = (route: Route): Section => route.split("/")[0] as Section;

export function siblingsOf(route: Route): Route[] {
  return (Object.keys(kRoutes) as Route[]).filter((each) => sectionOf(each) === sectionOf(route));
}

export function readRoute(hash: string): Route {
  const name = hash.replace(/^#\/?/, "");
  return name in kRoutes ? (name as Route) : "assets";
}
