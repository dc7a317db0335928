import { decimalsOf } from "../format";
import { Account, Quote } from "../wire/values";
import {
  Action,
  actionsOf,
  closableOf,
  Holding,
  isClosing,
  kNothing,
  kNoTicket,
  oppositeQuote,
  preferredAction,
  Ticket,
} from "./ticket";

// Tickets filled in from a position or from a choice of what to do.

type LegName = "long" | "short";

// Limit orders start at the opposite quote, so that they are filled at once.
export function quotedPrice(side: number, quote: Quote): string {
  return oppositeQuote(side, quote).toFixed(decimalsOf(quote.priceTick));
}

export function ticketFor(account: Account, quote: Quote, action: Action, volume: number): Ticket {
  return {
    ...kNoTicket,
    index: account.index,
    hashCode: quote.hashCode,
    side: action.side,
    combOffset: action.offset,
    price: quotedPrice(action.side, quote),
    volume: volume > 0 ? String(volume) : "",
  };
}

// What a trader most likely wants with an instrument: to close what is held, otherwise to open.
export function likelyTicket(account: Account, quote: Quote, held: Holding): Ticket {
  const action = preferredAction(actionsOf(account, held), held);
  const volume = isClosing(action.offset) ? closableOf(action, action.offset, held) : quote.volumeStep;
  return ticketFor(account, quote, action, Math.min(volume, quote.maxVolume));
}

function actionFor(account: Account, leg: LegName, closes: boolean): Action {
  const held: Holding = { ...kNothing, [leg]: 1 };
  const actions = actionsOf(account, held);
  const isWanted = ({ closes: what }: Action) => what === (closes ? leg : "");
  const wanted = actions.filter(isWanted);
  // Of the openings, the first buys; on the short side the last one sells.
  return closes || leg === "long" ? wanted[0] : wanted[wanted.length - 1];
}

// All of the leg that can be closed.
export function closing(account: Account, quote: Quote, leg: LegName, held: Holding): Ticket {
  const free = leg === "long" ? held.longFree : held.shortFree;
  return ticketFor(account, quote, actionFor(account, leg, true), Math.min(free, quote.maxVolume));
}

export function opening(account: Account, quote: Quote, leg: LegName): Ticket {
  return ticketFor(account, quote, actionFor(account, leg, false), quote.volumeStep);
}

export function reversal(account: Account, quote: Quote, leg: LegName, held: Holding): Ticket {
  return { ...closing(account, quote, leg, held), reverses: true };
}

// The ticket with another way to trade. Its price follows to that side's opposite quote, and its volume to what the
// order can close.
export function withAction(ticket: Ticket, account: Account, quote: Quote, action: Action, free: number): Ticket {
  const closes = action.closes !== "" && isClosing(action.offset);
  const volume = closes ? Math.min(free, quote.maxVolume) : quote.volumeStep;
  return { ...ticketFor(account, quote, action, volume), priceType: ticket.priceType };
}
