import { sumOf } from "../figures";
import { Account, Quote, Rates } from "../wire/values";
import { availableAfter, Cost, costOf, Purse } from "./cost";
import { Action, actionOf, Holding, isBuying, kNothing, openingOf, Ticket } from "./ticket";

// One order of a ticket, and what it finds when it is placed. A reversal has two.
export interface Step {
  action: Action;
  price: number; // NaN if it is none
  volume: number; // NaN if it is none
  held: Holding;
  purse: Purse;
  cost: Cost | undefined; // undefined if price, volume or rates are not known
}

export interface Totals {
  funds: number;
  commission: number;
  remaining: number; // available funds once all steps are filled
}

// The position, long and short, once the step is filled.
export function positionAfter({ action, volume, held }: Step): [number, number] {
  const opened = action.closes === "" ? volume : 0;
  const isLong = isBuying(action.side);
  return [
    held.long - (action.closes === "long" ? volume : 0) + (isLong ? opened : 0),
    held.short - (action.closes === "short" ? volume : 0) + (isLong ? 0 : opened),
  ];
}

// The second order of a reversal finds what the first has left.
export function secondOf(
  first: Step,
  ticket: Ticket,
  account: Account | undefined,
  quote: Quote | undefined,
  rates: Rates | undefined,
): Step {
  const action = actionOf(openingOf(ticket), account);
  const [long, short] = positionAfter(first);
  const { price, volume, cost } = first;
  const second = { ...first, action, held: { ...kNothing, long, short } };
  if (cost === undefined || quote === undefined || rates === undefined) return second;
  const purse = { ...first.purse, available: availableAfter(first.purse, cost) };
  return { ...second, purse, cost: costOf(action, price, volume, quote, rates, purse) };
}

// Undefined unless the cost of each step is known.
export function totalsOf(steps: readonly Step[]): Totals | undefined {
  const costs = steps.flatMap(({ cost }) => cost ?? []);
  if (costs.length < steps.length) return undefined;
  const last = steps.length - 1;
  return {
    funds: sumOf(costs, (cost) => Math.max(cost.funds, cost.margin)),
    commission: sumOf(costs, (cost) => cost.commission),
    remaining: availableAfter(steps[last].purse, costs[last]),
  };
}
