import assert from "node:assert/strict";
import test from "node:test";
import { kNoTicket } from "../../terminal/page/src/ticket/ticket";
import { modelOf } from "../../terminal/page/src/ticket/model";
import { capital, FakeTerminal, kNoViews, position, price } from "./fake";

// 3 long and 1 short of ten units each, at 3325.
const kHeld = position({
  currentPrice: 3325,
  longPosition: 3,
  shortPosition: 1,
  longMarketValue: 99_750,
  shortMarketValue: 33_250,
  totalMarketValue: 133_000,
  netMarketValue: 66_500,
  longFloatPorfit: 600,
  shortFloatPorfit: -100,
  floatPorfit: 500,
  todayPorfit: 340,
  todayProfitRatio: 0.01,
  todayProfitAccRatio: 0.02,
});

async function openPage(...positions: (typeof kHeld)[]): Promise<FakeTerminal> {
  const page = new FakeTerminal();
  page.rows["position.list"] = positions.length > 0 ? positions : [kHeld];
  page.rows["capital.list"] = [capital({ dynamicAmount: 1000, todayFloatingProfit: 340, closeProfit: 5 })];
  page.rows["quote.watch"] = [price(3325)];
  await page.logIn();
  page.store.show({ route: "positions", sheet: "" });
  await page.pass(1000);
  return page;
}

const watched = (page: FakeTerminal) => page.platform.socket.of("quote.watch").map((frame) => frame.data);

test("a position follows its price, up and down", async () => {
  const page = await openPage();
  for (const [last, step] of [
    [3335, 10],
    [3305, -20],
  ]) {
    page.pushPrices(price(last));
    assert.deepEqual(page.store.prices.position(kHeld), {
      ...kHeld,
      currentPrice: last,
      longMarketValue: 99_750 + 30 * step,
      shortMarketValue: 33_250 + 10 * step,
      totalMarketValue: 133_000 + 40 * step,
      netMarketValue: 66_500 + 20 * step,
      longFloatPorfit: 600 + 30 * step,
      shortFloatPorfit: -100 - 10 * step,
      floatPorfit: 500 + 20 * step,
      todayPorfit: 340 + 20 * step,
      todayProfitRatio: (0.01 * (340 + 20 * step)) / 340,
      todayProfitAccRatio: (0.02 * (340 + 20 * step)) / 340,
    });
    assert.equal(page.store.quote(7)?.bidPrice, last - 1);
  }
  page.pushPrices(price(3325));
  assert.equal(page.store.prices.position(kHeld), kHeld);
});

test("an account gains what its positions gain, from its own list on", async () => {
  const page = await openPage();
  const equity = () => page.store.prices.capital(page.store.lists.capital.rows[0]).dynamicAmount;
  page.pushPrices(price(3335));
  assert.equal(equity(), 1200);
  page.rows["capital.list"] = [capital({ dynamicAmount: 1203 })];
  page.store.asker.askNow(["capital"]); // the positions stay as they are
  await page.answer();
  assert.equal(equity(), 1203);
  page.pushPrices(price(3345));
  assert.equal(equity(), 1403);
  page.store.connection.lose();
  page.pushPrices(price(9999));
  assert.equal(equity(), 1403, "the last figures stay until there are others");
});

test("an account of which something is not watched stays as its list has it", async () => {
  const page = await openPage(kHeld, { ...kHeld, hashCode: 8 });
  page.pushPrices(price(3335));
  const [row] = page.store.lists.capital.rows;
  assert.equal(page.store.prices.capital(row), row);
  page.pushPrices(price(3325, 8));
  assert.equal(page.store.prices.capital(row).dynamicAmount, 1200);
});

test("what is shown is watched: once, at most 200, and nothing while the page is hidden", async () => {
  const page = await openPage(...Array.from({ length: 210 }, (_, n) => ({ ...kHeld, hashCode: n + 1 })));
  const all = Array.from({ length: 200 }, (_, n) => n + 1);
  assert.deepEqual(watched(page), [all]);
  await page.pass(5000);
  page.store.seenCodes = [209, 7]; // scrolled down
  await page.pass(500);
  page.platform.seen = false;
  page.store.keep();
  assert.deepEqual(watched(page).slice(1), [[209, 7, ...all.slice(0, 199).filter((code) => code !== 7)], []]);
  page.platform.seen = true;
  page.store.show({ route: "orders", sheet: "" });
  page.store.draft({ ...kNoTicket, index: 1, hashCode: 7 });
  page.store.show({ route: "orders", sheet: "trade" });
  assert.deepEqual(watched(page)[3], [7]);
  page.store.connection.lose();
  page.platform.pass(1000);
  await page.open();
  await page.pass(500);
  assert.deepEqual(watched(page), [[7]], "again after a break");
});

test("only a watched price is newer than a list", async () => {
  const page = await openPage();
  page.pushPrices(price(3335));
  page.store.asker.askNow(["positions"]);
  await page.answer();
  assert.equal(page.store.prices.position(kHeld).currentPrice, 3335, "the list may be older than the push");
  await page.pass(500);
  page.store.show({ route: "orders", sheet: "" });
  assert.equal(page.store.prices.position(kHeld).currentPrice, 3335, "the last price is newer than the list");
  page.store.asker.askNow(["positions"]);
  page.store.show({ route: "monitor", sheet: "row=1:7" });
  await page.pass(500);
  assert.equal(page.store.prices.position(kHeld).currentPrice, 3325);
});

test("a ticket warns while its price is not watched", async () => {
  const page = await openPage();
  page.rows["order.rates"] = {};
  page.store.draft({ ...kNoTicket, index: 1, hashCode: 7 });
  page.store.show({ route: "orders", sheet: "review" });
  await page.pass(500);
  const isStale = () => modelOf(page.store, { ...kNoTicket, index: 1, hashCode: 7 }).isStale;
  assert(!isStale());
  delete page.rows["quote.watch"];
  page.store.draft({ ...kNoTicket, index: 1, hashCode: 8 });
  page.store.draft({ ...kNoTicket, index: 1, hashCode: 7 });
  const refused = watched(page).length;
  assert(page.store.prices.areComing(page.platform.at));
  page.reply(page.last("quote.watch"), null, "no such topic");
  await page.pass(500);
  assert(isStale() && !page.store.prices.areComing(page.platform.at));
  await page.pass(50_000);
  assert.equal(watched(page).length, refused, "a host without the topic is not asked all the time");
});

test("views hear which prices have come, but not while a list moves", async () => {
  const page = await openPage();
  const heard: number[][] = [];
  page.store.subscribe({ ...kNoViews, moved: (codes) => heard.push([...codes]) });
  page.pushPrices(price(3335));
  page.store.asker.scrolled();
  page.pushPrices(price(3336));
  assert.deepEqual(heard, [[7]]);
});
