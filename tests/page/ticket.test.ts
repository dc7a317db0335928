import assert from "node:assert/strict";
import test from "node:test";
import { availableAfter, commissionOf, costOf, largestVolume, Purse, shareOf } from "../../terminal/page/src/ticket/cost";
import { closing, opening, reversal, withAction } from "../../terminal/page/src/ticket/fill";
import { distance, reasonsOf } from "../../terminal/page/src/ticket/review";
import { positionAfter, secondOf, Step, totalsOf } from "../../terminal/page/src/ticket/steps";
import * as ticketing from "../../terminal/page/src/ticket/ticket";
import { CreditFigures, Market, PriceType, Side } from "../../terminal/page/src/wire/values";
import { modelOf } from "../../terminal/page/src/ticket/model";
import { account, capital, FakeTerminal, order, position, quote, rates } from "./fake";

const held = { ...ticketing.kNothing, long: 12, longFree: 10, longToday: 4 };
const both = { ...held, short: 3, shortFree: 3 };
const purse: Purse = { market: Market.Futures, available: 100_000, equity: 200_000, credit: undefined };
const stocks: Purse = { ...purse, market: Market.Stocks };
const buy: ticketing.Action = { side: Side.Buy, offset: 1, closes: "" };
const sell: ticketing.Action = { side: Side.Sell, offset: 1, closes: "" };
const closeLong: ticketing.Action = { side: Side.Sell, offset: 4, closes: "long" };
const step = (action: ticketing.Action, price: number, volume: number, holding = ticketing.kNothing): Step => {
  const cost = costOf(action, price, volume, quote(), rates(), purse);
  return { action, price, volume, held: holding, purse, cost };
};
const filled = { ...ticketing.kNoTicket, index: 1, hashCode: 7, price: "3,326", volume: "2" };

test("what is held can be closed, and closing comes first", () => {
  const offered = (holding: ticketing.Holding, market = Market.Futures) =>
    ticketing.actionsOf(account({ marketType: market }), holding).map((each) => `${each.side}${each.offset}${each.closes}`);
  assert.deepEqual(offered(ticketing.kNothing), ["11", "21"]);
  assert.deepEqual(offered(held), ["11", "21", "24long"]);
  assert.deepEqual(offered(both), ["11", "21", "24long", "14short"]);
  assert.deepEqual(offered(ticketing.kNothing, Market.Stocks), ["10", "20long"]);
  assert.deepEqual(offered(ticketing.kNothing, Market.Credit), ["10", "20long", "30", "60long", "40", "50short"]);
  const preferred = (holding: ticketing.Holding) =>
    ticketing.preferredAction(ticketing.actionsOf(account(), holding), holding);
  assert.deepEqual(preferred(ticketing.kNothing), buy);
  assert.deepEqual(preferred(held), closeLong);
  assert.deepEqual(preferred({ ...ticketing.kNothing, short: 3 }), { side: Side.Buy, offset: 4, closes: "short" });
});

test("today's and yesterday's parts are closable apart", () => {
  assert.equal(ticketing.closableOf(closeLong, 4, held), 10);
  assert.equal(ticketing.closableOf(closeLong, 5, held), 4);
  assert.equal(ticketing.closableOf(closeLong, 6, held), 8);
  assert.equal(ticketing.closableOf(buy, 1, held), 0);
});

test("faults are found field by field", () => {
  const faults = (change: Partial<ticketing.Ticket>, of = quote(), closable = 0, action = buy) =>
    [...ticketing.faultsOf({ ...filled, ...change }, of, action, closable)].join();
  assert.equal(faults({}), "");
  assert.equal(faults({ price: "3326.5" }), "price");
  assert.equal(faults({ price: "3540", volume: "0" }), "price,volume");
  assert.equal(faults({ volume: "501" }), "volume");
  assert.equal(faults({ price: "", priceType: PriceType.Market }), "");
  const lots = quote({ volumeStep: 100, maxVolume: 10_000 });
  assert.equal(faults({ volume: "150" }, lots), "lot");
  assert.equal(faults({ volume: "150" }, lots, 150), ""); // all that is left
  assert.equal(faults({ volume: "2" }, quote(), 1, closeLong), "closable");
  assert.equal(faults({ volume: "2" }, quote(), 2, closeLong), "");
  assert.deepEqual([...ticketing.faultsOf(filled, undefined, buy, 0)], ["instrument"]);
});

test("the order says what the ticket says", () => {
  const sent = { ...filled, side: Side.Sell, combOffset: 4 };
  assert.deepEqual(ticketing.orderOf(sent, quote(), 5_000_999), {
    index: 1, hashCode: 7, side: 2, combOffset: 4, priceType: 1, price: 3326, offset: 0, volume: 2, insertTimestamp: 5000,
  });
  const market = ticketing.orderOf({ ...sent, priceType: PriceType.Market }, quote(), 0);
  assert.deepEqual([market.priceType, market.price], [2, 0]);
  assert.equal(ticketing.priceOf({ ...sent, priceType: PriceType.Market }, quote()), 3324);
  assert.equal(ticketing.priceOf({ ...filled, priceType: PriceType.Market }, quote()), 3326);
});

test("a position fills in the ticket", () => {
  const close = closing(account(), quote(), "short", { ...both, short: 5 });
  assert.deepEqual([close.side, close.combOffset, close.price, close.volume], [1, 4, "3326", "3"]);
  const add = opening(account(), quote(), "short");
  assert.deepEqual([add.side, add.combOffset, add.price, add.volume], [2, 1, "3324", "1"]);
  const reverse = reversal(account(), quote(), "long", held);
  assert.deepEqual([reverse.side, reverse.combOffset, reverse.volume, reverse.reverses], [2, 4, "10", true]);
  assert.equal(closing(account(), quote({ maxVolume: 6 }), "long", held).volume, "6");
  assert.deepEqual([ticketing.openingOf(reverse).side, ticketing.openingOf(reverse).combOffset], [2, 1]);
  const short = opening(account({ marketType: Market.Credit }), quote({ codeClass: 0 }), "short");
  assert.equal(short.side, Side.ShortSell);
  const other = withAction(filled, account(), quote(), closeLong, 10);
  assert.deepEqual([other.side, other.combOffset, other.price, other.volume], [2, 4, "3324", "10"]);
  const amended = ticketing.amendmentOf(order({ side: 2, combOffset: 4 }), 1);
  assert.deepEqual([amended.side, amended.combOffset, amended.price, amended.amends], [2, 4, "3300.0", "1001"]);
  assert.equal(ticketing.amendmentOf(order({ volume: 10, fillVolume: 4 }), 0).volume, "6"); // only what still works
});

test("an amendment may use what its order binds", async () => {
  const terminal = new FakeTerminal();
  const opened = order({ price: 3326, volume: 5, fillVolume: 3 });
  const closes = order({ localOrderId: "1002", side: 2, combOffset: 4, volume: 4 });
  terminal.rows["order.list"] = [order({ index: 2, volume: 9 }), opened, closes];
  terminal.rows["order.rates"] = rates();
  terminal.rows["capital.list"] = [capital({ available: 1000 })];
  terminal.rows["position.list"] = [position({ longPosition: 12, longAvailableQuantity: 8 })];
  await terminal.logIn();
  const modelFor = async (row: typeof opened) => {
    terminal.store.draft(ticketing.amendmentOf(row, 0));
    terminal.store.show({ route: "orders", sheet: "trade" });
    await terminal.answer();
    return modelOf(terminal.store, terminal.store.drafts.current as ticketing.Ticket);
  };
  const opening = await modelFor(opened);
  assert.equal(opening.amended?.volume, 5); // and not the other account's order of this number
  assert.equal(opening.purse.available, 1000 + 2 * (33260 * 0.1 + 3));
  assert.equal(opening.largest, 2);
  assert.equal((await modelFor(closes)).closable, 8 + 4);
});

test("an order costs margin or its value, and commission", () => {
  const cost = costOf(buy, 3326, 2, quote(), rates({ longByVolume: 5 }), purse);
  assert.deepEqual([cost.margin, cost.commission, cost.funds], [6652 + 10, 6, 6668]);
  // an opening sale below the market is filled at the bid, and short margin is its own
  assert.equal(costOf(sell, 3000, 1, quote(), rates(), purse).margin, 3324 * 10 * 0.2);
  assert.equal(costOf(closeLong, 3324, 1, quote(), rates(), purse).funds, 0);
  const stock = rates({ longByMoney: 1, commissionByMoney: 0.001, commissionByVolume: 0, commissionMinimum: 5, saleTax: 0.01 });
  assert.equal(commissionOf(stock, Side.Buy, 100, 1000), 5);
  assert.equal(commissionOf(stock, Side.Sell, 100, 10_000), 10 + 100);
});

test("the largest volume is the last that can be paid", () => {
  const lots = quote({ codeClass: 0, volumeStep: 100, maxVolume: 1_000_000, multiplier: 1 });
  const stock = rates({ longByMoney: 1, commissionByVolume: 0, commissionMinimum: 5 });
  assert.equal(largestVolume(buy, 10, 0, lots, stock, stocks), 9900); // 10,000 shares leave nothing for commission
  assert.equal(largestVolume(buy, 3326, 0, quote(), rates(), purse), 30);
  assert.equal(largestVolume(buy, 3326, 0, quote({ maxVolume: 20 }), rates(), purse), 20);
  assert.equal(largestVolume(closeLong, 3326, 10, quote(), undefined, purse), 10);
  assert.equal(largestVolume(buy, 3326, 0, quote(), undefined, purse), 0);
  assert.deepEqual([0.25, 0.5, 1].map((share) => shareOf(950, share, 100)), [200, 400, 950]);
});

test("credit orders are held to margin and limits", () => {
  const figures = { longMarginRate: 0.8, shortMarginRate: 1, marginAvl: 8000, longLimitAvl: 9000, shortLimitAvl: 500 };
  const credit: Purse = { ...purse, market: Market.Credit, credit: figures as CreditFigures };
  const stock = quote({ codeClass: 0, volumeStep: 100, maxVolume: 100_000, multiplier: 1, bidPrice: 10, askPrice: 10 });
  const largest = (side: Side, change: Partial<CreditFigures> = {}) =>
    largestVolume({ side, offset: 0, closes: "" }, 10, 0, stock, rates({ commissionByVolume: 0 }), {
      ...credit,
      credit: { ...figures, ...change } as CreditFigures,
    });
  assert.equal(largest(Side.MarginBuy), 900); // the limit
  assert.equal(largest(Side.MarginBuy, { longLimitAvl: 90_000 }), 1000); // the margin
  assert.equal(largest(Side.ShortSell), 0);
  assert.equal(largest(Side.ShortSell, { shortLimitAvl: 5000 }), 500);
});

test("what closes gives back its margin, at the last price, and the gain from there", () => {
  const after = (action: ticketing.Action, price: number, of = purse) =>
    availableAfter(of, costOf(action, price, 10, quote(), rates(), of)) - of.available;
  const value = 3325 * 10 * 10;
  assert.equal(after(closeLong, 3324), value * 0.1 - 100 - 30);
  assert.equal(after({ side: Side.Buy, offset: 4, closes: "short" }, 3326), value * 0.2 - 100 - 30);
  const credit = { ...purse, market: Market.Credit };
  assert.equal(after({ ...closeLong, offset: 0 }, 3325, credit), value - 30);
  assert.equal(after({ side: Side.SellToRepay, offset: 0, closes: "long" }, 3325, credit), -30);
});

test("what is easily a mistake has a reason to ask again", () => {
  const reviewed = (steps: Step[], change = {}) => ({ steps, isStale: false, isTwice: false, ...change });
  const reasons = (action: ticketing.Action, price: number, volume: number, share = 1, holding = ticketing.kNothing) =>
    reasonsOf(reviewed([step(action, price, volume, holding)]), quote(), share).join();
  assert.equal(reasons(buy, 3326, 2), "");
  assert.equal(reasons(buy, 3359, 1), ""); // 0.99 % through
  assert.equal(reasons(buy, 3360, 1), "far");
  assert.equal(reasons(sell, 3290, 1), "far");
  assert.equal(reasons(sell, 3359, 1), ""); // rests
  assert.equal(reasons(buy, 3326, 31), "funds");
  assert.equal(reasons(buy, 3326, 16, 0.25), "share");
  assert.equal(reasons(buy, 3326, 15, 0.25), "");
  assert.equal(reasons(sell, 3324, 1, 1, held), "against");
  assert.equal(reasons(buy, 3326, 1, 1, held), "");
  assert.equal(reasons(closeLong, 3324, 10, 0.01, both), "");
  const unknown = { ...step(buy, 3326, 1), cost: undefined };
  assert.deepEqual(reasonsOf(reviewed([unknown]), quote(), 1), ["stale"]);
  const small = reviewed([step(buy, 3326, 1)], { isStale: true, isTwice: true });
  assert.deepEqual(reasonsOf(small, quote(), 1), ["stale", "twice"]);
});

test("a reversal costs what its second order costs, with what the first gives back", () => {
  const reversal = { ...filled, side: Side.Sell, combOffset: 4, reverses: true };
  const steps = (volume: number) => {
    const first = step(closeLong, 3324, volume, { ...held, long: volume });
    return [first, secondOf(first, reversal, account(), quote(), rates())];
  };
  const [first, second] = steps(12);
  assert.deepEqual(second.action, sell);
  assert.deepEqual(positionAfter(second), [0, 12]);
  const given = 3325 * 120 * 0.1 - 120 - 36;
  const taken = 3324 * 120 * 0.2 + 36;
  assert.deepEqual(totalsOf([first, second]), { funds: taken, commission: 72, remaining: 100_000 + given - taken });
  const reasons = (volume: number, share: number) =>
    reasonsOf({ steps: steps(volume), isStale: false, isTwice: false }, quote(), share).join();
  assert.equal(reasons(12, 0.5), "");
  assert.equal(reasons(12, 0.25), "share");
  assert.equal(reasons(31, 2), "funds");
  const blind = { ...first, cost: undefined };
  const unpriced = secondOf(blind, reversal, account(), quote(), undefined);
  assert.equal(totalsOf([blind, unpriced]), undefined);
  assert.deepEqual(reasonsOf({ steps: [blind, unpriced], isStale: false, isTwice: false }, quote(), 1), ["stale"]);
});

test("the confirmation knows distance and position", () => {
  assert(Math.abs(distance(Side.Buy, 3359.26, quote()) - 0.01) < 1e-9);
  assert(distance(Side.Sell, 3330, quote()) < 0);
  assert(Number.isNaN(distance(Side.Buy, 3330, quote({ askPrice: 0 }))));
  assert.deepEqual(positionAfter(step(buy, 3326, 2, both)), [14, 3]);
  assert.deepEqual(positionAfter(step(sell, 3326, 2, both)), [12, 5]);
  assert.deepEqual(positionAfter(step(closeLong, 3326, 2, both)), [10, 3]);
});
