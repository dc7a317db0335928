import { Store } from "../state/store";
import { Account, Order, Quote, Rates } from "../wire/values";
import { Cost, costOf, largestVolume, Purse, purseOf, withReturned } from "./cost";
import { readNumber } from "./numbers";
import { secondOf, Step } from "./steps";
import { Action, actionOf, actionsOf, closableOf, Holding, holdingOf, isClosing, priceOf, restOf, Ticket } from "./ticket";

// All that a ticket's form and its confirmation show, from what the page knows now.
export interface Model {
  account: Account | undefined;
  quote: Quote | undefined;
  held: Holding;
  actions: Action[];
  action: Action;
  closable: number;
  rates: Rates | undefined;
  purse: Purse;
  price: number; // NaN if it is none
  volume: number; // NaN if it is none
  steps: Step[]; // its order; of a reversal, both
  largest: number;
  amended: Order | undefined; // the working order that the ticket replaces
  isStale: boolean; // the figures that warn of mistakes are out of date
  isTwice: boolean; // another order like this has no outcome yet
}

function costOfOrder(order: Order, account: Account | undefined, quote: Quote, rates: Rates, purse: Purse): Cost {
  const { side, combOffset } = order;
  const action = actionOf({ ...({} as Ticket), side, combOffset }, account);
  return costOf(action, order.price, restOf(order), quote, rates, purse);
}

export function modelOf(store: Store, ticket: Ticket): Model {
  const { index, hashCode } = ticket;
  const account = store.accountOf(index);
  const quote = store.quote(hashCode);
  const rates = store.asker.ratesOf({ index, hashCode });
  const held = holdingOf(store.asker.positionOf({ index, hashCode }));
  const action = actionOf(ticket, account);
  const amended = ticket.amends === "" ? undefined : store.asker.workingOrder(index, ticket.amends);
  const capital = store.asker.of(store.lists.capital.rows, index);
  const credit = store.lists.credit.rows.find((row) => row.index === index)?.creditInfo[0];
  const own = purseOf(account?.marketType ?? 0, capital, credit);
  const isKnown = amended !== undefined && quote !== undefined && rates !== undefined;
  const purse = withReturned(own, isKnown ? costOfOrder(amended, account, quote, rates, own) : undefined);
  const returned = amended !== undefined && (isClosing(amended.combOffset) || action.closes !== "") ? restOf(amended) : 0;
  const closable = closableOf(action, ticket.combOffset, held) + returned;
  const price = quote === undefined ? NaN : priceOf(ticket, quote);
  const volume = readNumber(ticket.volume);
  const hasCost = quote !== undefined && rates !== undefined && price > 0 && volume > 0;
  const cost = hasCost ? costOf(action, price, volume, quote, rates, purse) : undefined;
  const first = { action, price, volume, held, purse, cost };
  return {
    account,
    quote,
    held,
    actions: actionsOf(account, held),
    action,
    closable,
    rates,
    purse,
    price,
    volume,
    steps: ticket.reverses ? [first, secondOf(first, ticket, account, quote, rates)] : [first],
    largest: quote === undefined ? 0 : largestVolume(action, price, closable, quote, rates, purse),
    amended,
    isStale: store.asker.isOutdated(store.now) || !(store.prices.isWatched(hashCode) || store.prices.areComing(store.now)),
    isTwice: store.desk.hasUnsettled(ticket),
  };
}
