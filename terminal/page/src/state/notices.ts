import { Platform } from "../platform";
import { addressOf } from "../route";
import { t } from "../texts/texts";
import { Fill } from "../wire/values";
import { fillName } from "./merge";

export interface Notice {
  id: number;
  kind: "info" | "error" | "fill" | "alert"; // errors and alerts stay until they are dismissed
  text: string;
  address: string; // to which a tap leads; empty: nowhere
  count: number; // of fills that were merged
  seenAt: number; // by clock(); 0: not yet
  onSeen?: () => void;
}

const kShownMs = 5000;
const kBurstMs = 2000;
const kMost = 20;

// An exchange may count its fills anew each day. Times alone would not do: the clocks of exchanges differ.
const markOf = (fill: Fill): string => `${fillName(fill)}@${fill.exchTimestamp}`;

function readSeen(text: string): Set<string> | null {
  try {
    return new Set(JSON.parse(text) as string[]);
  } catch {
    return null; // nothing is stored
  }
}

// Notices to the user, shown one at a time. Their time runs only while the page is seen, so those that come while it is
// hidden are kept until then. Fills count as new until the view of orders has been open.
export class Notices {
  list: Notice[] = [];
  newFills = 0;
  private lastId = 0;
  private lastFillAt = 0;
  private known = new Set<string>(); // marks of the fills that were listed or pushed
  private hasList = false;
  private seen: Set<string> | null; // marks of the day's fills that have been seen; null on a new device
  private seenRows: Fill[] | null = null; // those of `seen`

  constructor(
    private readonly platform: Platform,
    private readonly describe: (fill: Fill) => string,
    private readonly onNew: (title: string, address: string) => void, // a fill or an alert
  ) {
    this.seen = readSeen(platform.recall("seenFills"));
  }

  tell(text: string, isError = false): void {
    this.add(isError ? "error" : "info", text, "");
  }

  tellAlert(text: string, address: string, onSeen: () => void): void {
    this.add("alert", text, address, onSeen);
    this.onNew(text, address);
  }

  dismiss(notice: Notice): void {
    this.see(notice);
    this.list = this.list.filter((each) => each !== notice);
  }

  clear(): void {
    this.list = [];
    this.known.clear();
    this.hasList = false;
    this.newFills = 0;
    this.seen = null;
    this.seenRows = null;
    this.platform.remember("seenFills", "");
  }

  // To be called while the page is seen. Only the first in the list is shown, and only its time runs.
  age(now: number): void {
    const [first] = this.list;
    if (first === undefined) return;
    const stays = first.kind === "error" || first.kind === "alert";
    if (first.seenAt === 0) this.see(first);
    else if (!stays && now - first.seenAt > kShownMs) this.dismiss(first);
  }

  // A list of all fills. The new ones get notices.
  seeList(all: Fill[]): void {
    if (this.seen === null) this.setSeen(all); // a new device knows nothing of what it has missed
    this.tellFills(all.filter((fill) => this.hasList || this.isUnseen(fill)));
    for (const fill of all) this.known.add(markOf(fill));
    this.hasList = true;
    this.count(all);
  }

  // Pushed fills, and all of the day with them.
  seePush(pushed: Fill[], all: Fill[]): void {
    this.tellFills(pushed);
    this.count(all);
  }

  // The view of orders is open.
  seeOrders(all: Fill[]): void {
    if (!this.hasList) return;
    this.setSeen(all);
    this.newFills = 0;
  }

  private count(all: Fill[]): void {
    this.newFills = this.seen === null ? 0 : all.filter((fill) => this.isUnseen(fill)).length;
  }

  private tellFills(fills: Fill[]): void {
    for (const fill of fills) {
      if (!this.known.has(markOf(fill))) this.addFill(fillName(fill), this.describe(fill));
      this.known.add(markOf(fill));
    }
  }

  private isUnseen(fill: Fill): boolean {
    return !this.seen?.has(markOf(fill));
  }

  private setSeen(all: Fill[]): void {
    if (this.seenRows === all) return;
    this.seenRows = all;
    this.seen = new Set(all.map(markOf));
    this.platform.remember("seenFills", JSON.stringify([...this.seen]));
  }

  // Fills of one burst share a notice.
  private addFill(name: string, text: string): void {
    const address = addressOf("orders/fills", `row=${name}`);
    const now = this.platform.clock();
    const last = this.list.find((each) => each.kind === "fill");
    const isBurst = last !== undefined && now - this.lastFillAt < kBurstMs;
    this.lastFillAt = now;
    if (isBurst) Object.assign(last, { text, address: addressOf("orders/fills", ""), count: last.count + 1, seenAt: 0 });
    else this.add("fill", text, address);
    this.onNew(t("fillNotice", text), address);
  }

  private see(notice: Notice): void {
    if (notice.seenAt !== 0) return;
    notice.seenAt = this.platform.clock();
    notice.onSeen?.();
  }

  // Newest first: it is what is shown. A fill may come before the reply that its order was sent, and is not hidden by it.
  // However many others follow, an alert is not dropped.
  private add(kind: Notice["kind"], text: string, address: string, onSeen?: () => void): void {
    const notice = { id: ++this.lastId, kind, text, address, count: 1, seenAt: 0, onSeen };
    const place = kind === "info" && this.list[0]?.kind === "fill" ? 1 : 0;
    const all = [...this.list.slice(0, place), notice, ...this.list.slice(place)];
    this.list = all.filter((each, at) => at < kMost || each.kind === "alert");
  }
}
