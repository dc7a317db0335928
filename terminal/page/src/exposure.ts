import { sumOf } from "./figures";
import { Position } from "./wire/values";

// What is held, in money.

export interface Exposure {
  name: string; // empty: all that are too small for a bar
  longs: number; // market values, never negative
  shorts: number;
}

const kMostBars = 15;

const sizeOf = ({ longs, shorts }: Exposure): number => longs + shorts;

// The largest first. Positions with the same name are taken together.
export function exposures(rows: readonly Position[], nameOf: (row: Position) => string): Exposure[] {
  const byName = new Map<string, Exposure>();
  for (const row of rows) {
    const name = nameOf(row);
    const found = byName.get(name) ?? { name, longs: 0, shorts: 0 };
    byName.set(name, found);
    found.longs += row.longMarketValue;
    found.shorts += row.shortMarketValue;
  }
  const all = [...byName.values()].filter((each) => sizeOf(each) > 0).sort((a, b) => sizeOf(b) - sizeOf(a));
  if (all.length <= kMostBars) return all;
  const rest = all.slice(kMostBars - 1);
  const others = {
    name: "",
    longs: sumOf(rest, (each) => each.longs),
    shorts: sumOf(rest, (each) => each.shorts),
  };
  return [...all.slice(0, kMostBars - 1), others];
}

// The instruments of the positions, the largest first.
export function codesOf(rows: readonly Position[]): number[] {
  const bySize = [...rows].sort((a, b) => b.totalMarketValue - a.totalMarketValue);
  return [...new Set(bySize.map((row) => row.hashCode))];
}
