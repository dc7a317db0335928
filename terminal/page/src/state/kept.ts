import { Platform } from "../platform";
import { misfit } from "../wire/check";
import { kReplies } from "../wire/shapes";
import { Asker } from "./asker";
import { HeldLists, kAsking, ListName } from "./lists";

// The last answers as a text that outlives the page: for each list its rows, and when they were right, in milliseconds
// since 1970. They are the token's.
interface Kept {
  token: string;
  lists: [string, { at: number; rows: unknown }][];
}

const kMostRows = 1000; // of a list: a device stores only some megabytes

function pack(lists: HeldLists, token: string, platform: Platform): string {
  const sinceEpoch = platform.now() - platform.clock();
  // The history depends on what the user has picked.
  const isKept = (name: string) => name !== "equity";
  const known = Object.entries(lists).filter(([name, { at, rows }]) => isKept(name) && at > 0 && rows.length <= kMostRows);
  const kept: Kept = { token, lists: known.map(([name, { at, rows }]) => [name, { at: at + sinceEpoch, rows }]) };
  return JSON.stringify(kept);
}

function parse(text: string): Kept {
  try {
    return JSON.parse(text) as Kept;
  } catch {
    return { token: "", lists: [] }; // nothing is kept
  }
}

// Keeps the figures on the device, for an opening without a connection.
export class Keeper {
  private keptAt = 0; // the time of the newest list that is kept

  constructor(
    private readonly platform: Platform,
    private readonly asker: Asker,
  ) {}

  // What another version of the page kept may break this one's contract.
  restore(token: string): void {
    const kept = parse(this.platform.recall("figures"));
    const [clock, now] = [this.platform.clock(), this.platform.now()];
    for (const [name, { at, rows }] of kept.token === token ? kept.lists : []) {
      if (!(name in kAsking) || misfit(rows, kReplies[kAsking[name as ListName].topic]) !== "") continue;
      this.asker.take(name as ListName, rows, Math.max(1, clock - Math.max(0, now - at)));
    }
  }

  keep(token: string): void {
    const newest = Math.max(...Object.values(this.asker.lists).map((list) => list.at));
    if (newest === this.keptAt) return;
    this.keptAt = newest;
    this.platform.remember("figures", pack(this.asker.lists, token, this.platform));
  }

  drop(): void {
    this.asker.clear();
    this.keptAt = 0;
    this.platform.remember("figures", "");
  }
}
