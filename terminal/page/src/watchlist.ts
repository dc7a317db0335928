import { Account, Quote } from "./wire/values";
import { classesOf, mayOrder } from "./ticket/ticket";

// The view of instruments: starred ones first, then those that are held, each group in the terminal's order.
export function arranged(quotes: readonly Quote[], stars: ReadonlySet<number>, held: ReadonlySet<number>): Quote[] {
  const groups: [Quote[], Quote[], Quote[]] = [[], [], []];
  for (const quote of quotes) {
    const { hashCode } = quote;
    groups[stars.has(hashCode) ? 0 : held.has(hashCode) ? 1 : 2].push(quote);
  }
  return groups.flat();
}

export const changeOf = (quote: Quote): number => quote.lastPrice - quote.preSettlementPrice;

export const changeShare = (quote: Quote): number => (quote.preSettlementPrice > 0 ? changeOf(quote) / quote.preSettlementPrice : 0);

// The account in which a tap trades the instrument: the one in sight, one that holds it, the one traded in last, or the
// first that can.
export function accountFor(quote: Quote, accounts: readonly Account[], wanted: readonly number[]): Account | undefined {
  const able = accounts.filter((account) => mayOrder(account) && classesOf(account).includes(quote.codeClass));
  for (const index of wanted) {
    const found = able.find((account) => account.index === index);
    if (found !== undefined) return found;
  }
  return able[0];
}
