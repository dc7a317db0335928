import { Quote } from "../wire/values";
import { Cost, isAffordable, Purse } from "./cost";
import { Action, Holding, isBuying, oppositeQuote } from "./ticket";

// What the confirmation says of an order, and what asks for a second tap.

export type Reason = "far" | "funds" | "share" | "against";

const kFar = 0.01;

// How far the price is through the opposite quote, as a factor: 0.01 is 1 % worse. Negative if it rests.
export function distance(side: number, price: number, quote: Quote): number {
  const opposite = oppositeQuote(side, quote);
  if (!(opposite > 0)) return 0;
  return (isBuying(side) ? price - opposite : opposite - price) / opposite;
}

// The position before and after, as long and short.
export function positionAfter(action: Action, volume: number, held: Holding, reverses: boolean): [number, number] {
  const opened = reverses ? volume : action.closes === "" ? volume : 0;
  const closed = action.closes === "" ? 0 : volume;
  const isLong = isBuying(action.side);
  return [
    held.long - (action.closes === "long" ? closed : 0) + (isLong ? opened : 0),
    held.short - (action.closes === "short" ? closed : 0) + (isLong ? 0 : opened),
  ];
}

export function reasonsOf(
  action: Action,
  price: number,
  quote: Quote,
  cost: Cost | undefined,
  purse: Purse,
  share: number, // of equity that an order may take without a second tap
  held: Holding,
): Reason[] {
  const reasons: Reason[] = [];
  if (distance(action.side, price, quote) > kFar) reasons.push("far");
  if (cost !== undefined && !isAffordable(action, cost, purse)) reasons.push("funds");
  const taken = cost === undefined ? 0 : Math.max(cost.funds, cost.collateral);
  if (action.closes === "" && taken > share * purse.equity) reasons.push("share");
  const isAgainst = isBuying(action.side) ? held.short > 0 : held.long > 0;
  if (action.closes === "" && isAgainst) reasons.push("against");
  return reasons;
}
