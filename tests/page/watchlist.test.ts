import assert from "node:assert/strict";
import test from "node:test";
import { Stars } from "../../terminal/page/src/state/stars";
import { accountFor, arranged, changeShare } from "../../terminal/page/src/watchlist";
import { CodeClass, Market } from "../../terminal/page/src/wire/values";
import { account, FakePlatform, quote } from "./fake";

test("starred instruments come first, then those held, each group as listed", () => {
  const quotes = [1, 2, 3, 4, 5, 6].map((hashCode) => quote({ hashCode }));
  const codes = arranged(quotes, new Set([5, 2]), new Set([2, 4])).map((each) => each.hashCode);
  assert.deepEqual(codes, [2, 5, 4, 1, 3, 6]);
});

test("stars are kept on the device until it is forgotten", () => {
  const platform = new FakePlatform();
  const stars = new Stars(platform);
  for (const code of [7, -4_000_002, 7, 8]) stars.toggle(code);
  const kept = new Stars(platform);
  assert.deepEqual([7, 8, -4_000_002, 0].map((code) => kept.has(code)), [false, true, true, false]);
  kept.clear();
  assert.equal(platform.recall("stars"), "");
});

test("a change is a share of the last settlement", () => {
  assert.equal(changeShare(quote({ lastPrice: 99, preSettlementPrice: 100 })), -0.01);
  assert.equal(changeShare(quote({ lastPrice: 99, preSettlementPrice: 0 })), 0);
});

test("a tap trades in an account that can: the wanted one, or the first", () => {
  const accounts = [
    account({ index: 1 }),
    account({ index: 2, marketType: Market.Stocks }),
    account({ index: 3, accountStatus: 0 }),
    account({ index: 4, marketType: Market.Credit }),
  ];
  const stock = quote({ codeClass: CodeClass.Stock });
  for (const [traded, wanted, expected] of [
    [quote(), [], 1],
    [quote(), [3, 4], 1],
    [stock, [0, 1], 2],
    [stock, [0, 4], 4],
    [quote({ codeClass: CodeClass.Option }), [1], undefined],
  ] as const) {
    assert.equal(accountFor(traded, accounts, wanted)?.index, expected);
  }
});
