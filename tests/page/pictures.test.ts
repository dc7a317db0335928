import assert from "node:assert/strict";
import test from "node:test";
import { kBox, nearest, pathOf, scaleOf } from "../../terminal/page/src/curve";
import { codesOf, exposures } from "../../terminal/page/src/exposure";
import { earned, paymentsOf, Period, pointsOf, rangeOf, tableOf } from "../../terminal/page/src/history";
import { toneOfUse, useOf } from "../../terminal/page/src/limits";
import { CreditFigures, EquityPoint, Market, Position } from "../../terminal/page/src/wire/values";
import { account, capital, FakeTerminal, position } from "./fake";

const kHour = 3_600_000;

function point(time: number, equity: number, change: Partial<EquityPoint> = {}): EquityPoint {
  const day = Math.floor(time / (24 * kHour));
  return { time, day, equity, available: 0, margin: 0, profit: 0, deposit: 0, withdraw: 0, ...change };
}

test("a history tells gains from payments", () => {
  const points = [
    point(30 * kHour, 100),
    point(31 * kHour, 160, { deposit: 50 }),
    point(47 * kHour, 90, { deposit: 50, withdraw: 60 }),
    point(49 * kHour, 120, { deposit: 80, withdraw: 60 }),
  ];
  assert.deepEqual(points.map((each) => earned(points, each)), [0, 10, 0, 0]);
  const payments = paymentsOf(points).map((each) => [each.time / kHour, each.amount]);
  assert.deepEqual(payments, [[31, 50], [47, -60], [49, 30]]);
  assert.deepEqual(pointsOf(points, Period.Day), [points[3]], "the last trading day");
  assert.equal(pointsOf(points, Period.Week).length, 4);
  assert.deepEqual(tableOf(points, Period.Month), [points[2], points[3]], "the last of each day");
  assert.equal(tableOf(points, Period.Day).length, 4, "the last of each hour");
});

test("a curve fills its box, and a flat one is in the middle", () => {
  const points = [0, 10, 40].map((time) => ({ time, value: time % 20 }));
  const scale = scaleOf(points, -10);
  assert.equal(pathOf(points, scale), "M0.0 150.0L250.0 0.0L1000.0 150.0");
  assert.deepEqual([scale.low, scale.high], [-10, 10]);
  const flat = [{ time: 5, value: 7 }];
  assert.equal(pathOf(flat, scaleOf(flat, 7)), `M0 ${kBox.height / 2}H${kBox.width}`);
  assert.deepEqual([-1, 0.1, 0.2, 0.6, 0.7, 2].map((share) => nearest(points, share)), [0, 0, 1, 1, 2, 2]);
});

test("exposures are taken together by name, the largest first, the small ones as one", () => {
  const row = (hashCode: number, longs: number, shorts: number): Position =>
    position({ hashCode, codeName: `n${hashCode % 100}`, longMarketValue: longs, shortMarketValue: shorts, totalMarketValue: longs + shorts });
  const named = (rows: Position[]) => exposures(rows, (each) => each.codeName);
  assert.deepEqual(named([row(1, 5, 0), row(2, 0, 30), row(101, 10, 2), row(3, 0, 0)]), [
    { name: "n2", longs: 0, shorts: 30 },
    { name: "n1", longs: 15, shorts: 2 },
  ]);
  const many = named(Array.from({ length: 20 }, (_, n) => row(n, 100 - n, n)));
  assert.equal(many.length, 15);
  assert.deepEqual(many[14], { name: "", longs: 83 + 82 + 81 + 86 + 85 + 84, shorts: 17 + 18 + 19 + 14 + 15 + 16 });
  assert.deepEqual(codesOf([row(1, 1, 0), row(2, 5, 0), row(1, 9, 0)]), [1, 2]);
});

test("a meter shows risk against the equity, and a maintenance ratio against its floor", () => {
  const credit = { marginRatio: 2.6, keepMarginRatio: 1.3 } as CreditFigures;
  const risky = capital({ risk: 0.81 });
  assert.deepEqual(useOf(risky, Market.Futures, undefined), { share: 0.81, floor: 0 });
  assert.equal(useOf(risky, Market.Stocks, undefined), undefined, "shares are paid in full");
  assert.deepEqual(useOf(risky, Market.Credit, credit), { share: 0.5, floor: 1.3 });
  assert.equal(useOf(risky, Market.Credit, { ...credit, marginRatio: 0 })?.share, 0, "no debt");
  assert.deepEqual([0.79, 0.8, 0.94, 0.95, 2].map(toneOfUse), ["", "near", "near", "full", "full"]);
});

test("the history is that of the account and the period picked last", async () => {
  const terminal = new FakeTerminal();
  terminal.rows["account.list"] = [account(), account({ index: 2, userCode: "A2" })];
  await terminal.logIn();
  const { store } = terminal;
  store.show({ route: "assets/equity", sheet: "" });
  const first = terminal.last("equity.list").data as object;
  assert.deepEqual(first, { index: 1, ...rangeOf(Period.Day, terminal.platform.now()), points: 240 });
  store.pickAccount(2); // while the answer is on its way
  terminal.rows["equity.list"] = [point(0, 1)];
  await terminal.answer();
  const asked = terminal.platform.socket.of("equity.list");
  assert.deepEqual(asked.map((each) => (each.data as { index: number }).index), [1, 2]);
  assert.equal(store.lists.equity.rows.length, 1);
  store.prefer({ period: Period.Year });
  assert.equal(store.lists.equity.rows.length, 0, "another period's points are not shown");
  const { from, to } = terminal.last("equity.list").data as { from: number; to: number };
  assert(to - from > 366 * 24 * kHour);
});
