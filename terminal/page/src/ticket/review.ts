import { Quote } from "../wire/values";
import { isAffordable } from "./cost";
import { Model } from "./model";
import { Step } from "./steps";
import { isBuying, oppositeQuote } from "./ticket";

// What the confirmation says of an order, and what asks for a second tap.

export type Reason = "stale" | "twice" | "far" | "funds" | "share" | "against";

const kFar = 0.01;

// How far the price is through the opposite quote, as a factor: 0.01 is 1 % worse. Negative if it rests, NaN if nobody
// quotes.
export function distance(side: number, price: number, quote: Quote): number {
  const opposite = oppositeQuote(side, quote);
  if (!(opposite > 0)) return NaN;
  return (isBuying(side) ? price - opposite : opposite - price) / opposite;
}

// `share` is that of equity which an order may take without a second tap.
function reasonsOfStep({ action, price, cost, purse, held }: Step, quote: Quote, share: number): Reason[] {
  const reasons: Reason[] = [];
  const opens = action.closes === "";
  if (cost === undefined && opens) reasons.push("stale");
  if (distance(action.side, price, quote) > kFar) reasons.push("far");
  if (cost !== undefined && !isAffordable(action, cost, purse)) reasons.push("funds");
  const taken = cost === undefined ? 0 : Math.max(cost.funds, cost.collateral);
  if (opens && taken > share * purse.equity) reasons.push("share");
  const isAgainst = isBuying(action.side) ? held.short > 0 : held.long > 0;
  if (opens && isAgainst) reasons.push("against");
  return reasons;
}

type Reviewed = Pick<Model, "steps" | "isStale" | "isTwice">;

export function reasonsOf({ steps, isStale, isTwice }: Reviewed, quote: Quote, share: number): Reason[] {
  const reasons = new Set(steps.flatMap((step) => reasonsOfStep(step, quote, share)));
  if (isStale) reasons.add("stale");
  if (isTwice) reasons.add("twice");
  return [...reasons];
}
