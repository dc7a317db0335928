import { Platform } from "../platform";
import { Fill } from "../wire/values";
import { fillName } from "./merge";

export interface Notice {
  id: number;
  kind: "info" | "error" | "fill"; // an error stays until it is dismissed
  text: string;
  fill: string; // the name of the fill; empty if it is none
  count: number; // of fills that were merged
  seenAt: number; // by clock(); 0: not yet
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
  private told = new Set<string>(); // marks of the fills that were listed or pushed
  private hasList = false;
  private seen: Set<string> | null; // marks of the day's fills that have been seen; null on a new device
  private seenRows: Fill[] | null = null; // those of `seen`

  constructor(
    private readonly platform: Platform,
    private readonly onNewFill: (text: string, fill: string) => void,
  ) {
    this.seen = readSeen(platform.recall("seenFills"));
  }

  tell(text: string, isError = false): void {
    this.add(isError ? "error" : "info", text, "");
  }

  dismiss(notice: Notice): void {
    this.list = this.list.filter((each) => each !== notice);
  }

  clear(): void {
    this.list = [];
    this.told.clear();
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
    if (first.seenAt === 0) first.seenAt = now;
    else if (first.kind !== "error" && now - first.seenAt > kShownMs) this.dismiss(first);
  }

  // A list of all fills. The new ones get notices.
  seeList(all: Fill[], describe: (fill: Fill) => string): void {
    if (this.seen === null) this.setSeen(all); // a new device knows nothing of what it has missed
    this.tellFills(all.filter((fill) => this.hasList || this.isUnseen(fill)), describe);
    for (const fill of all) this.told.add(markOf(fill));
    this.hasList = true;
    this.count(all);
  }

  // Pushed fills, and all of the day with them.
  seePush(pushed: Fill[], all: Fill[], describe: (fill: Fill) => string): void {
    this.tellFills(pushed, describe);
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

  private tellFills(fills: Fill[], describe: (fill: Fill) => string): void {
    for (const fill of fills) {
      if (!this.told.has(markOf(fill))) this.addFill(fillName(fill), describe(fill));
      this.told.add(markOf(fill));
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
    const now = this.platform.clock();
    const last = this.list.find((each) => each.kind === "fill");
    const isBurst = last !== undefined && now - this.lastFillAt < kBurstMs;
    this.lastFillAt = now;
    if (isBurst) Object.assign(last, { text, fill: name, count: last.count + 1, seenAt: 0 });
    else this.add("fill", text, name);
    this.onNewFill(text, name);
  }

  // Newest first: it is what is shown. A fill may come before the reply that its order was sent, and is not hidden by it.
  private add(kind: Notice["kind"], text: string, fill: string): void {
    const notice = { id: ++this.lastId, kind, text, fill, count: 1, seenAt: 0 };
    const place = kind === "info" && this.list[0]?.kind === "fill" ? 1 : 0;
    this.list = [...this.list.slice(0, place), notice, ...this.list.slice(place)].slice(0, kMost);
  }
}
