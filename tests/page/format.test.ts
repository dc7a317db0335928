import assert from "node:assert/strict";
import { readdirSync, readFileSync } from "node:fs";
import test from "node:test";
import { closingText, dealText, orderText } from "../../terminal/page/src/describe";
import { profitToday, returnToday } from "../../terminal/page/src/figures";
import * as format from "../../terminal/page/src/format";
import { fieldValue, kPositionFields } from "../../terminal/page/src/texts/fields";
import { explained } from "../../terminal/page/src/texts/refusals";
import { useLanguage } from "../../terminal/page/src/texts/texts";
import { isCount, moved, readNumber } from "../../terminal/page/src/ticket/numbers";
import { kNothing } from "../../terminal/page/src/ticket/ticket";
import { Position } from "../../terminal/page/src/wire/values";
import { capital, order, quote } from "./fake";

test("numbers are written whole, with their sign", () => {
  assert.equal(format.money(123456789.005), "123,456,789.01");
  assert.equal(format.signed(1234.5, 2), "+1,234.50");
  assert.equal(format.signed(-1234.5, 2), "−1,234.50");
  assert.equal(format.signed(-0.001, 2), "0.00");
  assert.equal(format.percent(0.0123, true), "+1.23%");
  for (const nothing of [undefined, NaN, Infinity, "7", null]) assert.equal(format.money(nothing), "–");
  assert.deepEqual([1, 0.02, 0.005, 0.0001, 10].map(format.decimalsOf), [0, 2, 3, 4, 0]);
  assert.deepEqual([0, 59_999, 60_000, 3_600_000].map(format.age), [[0, "s"], [59, "s"], [1, "min"], [1, "h"]]);
});

test("numbers are read as they are typed", () => {
  for (const [typed, value] of [
    ["3390", 3390],
    ["3,390", 3390],
    ["1,234,567.5", 1234567.5],
    [" 42 ", 42],
    ["３３９０", 3390],
    ["3。5", 3.5],
  ] as const) {
    assert.equal(readNumber(typed), value, typed);
  }
  for (const wrong of ["", "3,39", "33,90", "1e5", "-1", "+1", "0x10", "3.", ".5", "3 390", "abc"]) {
    assert(Number.isNaN(readNumber(wrong)), wrong);
  }
  assert(isCount("1,000", 1, 1000) && !isCount("1,001", 1, 1000) && !isCount("2.5", 1, 10) && !isCount("0", 1, 10));
});

test("steps stay on the grid and within the limits", () => {
  assert.equal(moved("3,390", 1, 1, 3077, 3539), "3391");
  assert.equal(moved("962.41", 1, 0.02, 894.54, 1029.22), "962.44");
  assert.equal(moved("", 1, 100, 100, 1000), "200");
  assert.equal(moved("3539", 1, 1, 3077, 3539), "3539");
  assert.equal(moved("100", -1, 100, 100, 1000), "100");
});

test("orders are named in both languages", () => {
  const stock = quote({ codeClass: 0 });
  const named: [string, string][] = [];
  for (const language of ["en", "zh"] as const) {
    useLanguage(language);
    named.push([dealText(2, 4, quote()), dealText(2, 4, stock)]);
  }
  assert.deepEqual(named, [["Sell to close", "Sell"], ["卖出平仓", "卖出"]]);
  useLanguage("en");
  const held = { ...kNothing, long: 12, longFree: 10, short: 3, shortFree: 3 };
  assert.deepEqual([closingText("long", held), closingText("short", held)], ["Close long 10/\u200b12", "Close short 3"]);
  assert.equal(orderText(order(), quote()), "Buy to open rebar 2 @ 3,300");
  assert.equal(orderText(order({ priceType: 2 }), quote()), "Buy to open rebar 2 @ Market");
});

test("a refusal is explained in the page's language above the terminal's own text", () => {
  useLanguage("en");
  const short = "可平数量不足: 委托 300, 可平 0";
  assert.equal(explained(short), `Not enough to close: ordered 300, closable 0\n${short}`);
  assert.equal(explained("something else"), "something else");
  const nested = "头寸监控同步委托被拒绝 (A1 rb2701): 没有账户 3";
  assert.equal(explained(nested), `A synchronising order was refused (A1 rb2701): There is no account 3\n${nested}`);
  useLanguage("zh");
  assert.equal(explained(short), short);
  assert.equal(explained("can not find tid by index:9"), "没有编号为 9 的账户\ncan not find tid by index:9");
  useLanguage("en");
});

// What the desk puts into other texts.
const kParts: { [text: string]: string[] } = {
  "{}不足: 需要 {:.2f}, 可用 {:.2f}": ["可用资金", "保证金可用余额", "融资额度", "融券额度"],
  "委托 {} {}, 不能撤单": ["已全部成交", "已撤单", "是废单"],
};

test("each refusal and notice of the trading desk has its meaning", () => {
  const folder = `${process.env.PAGE_SOURCE}/../../trading`;
  const isOther = /quote\.set|order\.rates|equity\.list|^: |^价格|算法|交易助手|一键同步/; // texts that the page never gets, and names
  const parts = Object.values(kParts).flat();
  let count = 0;
  const isOfBodies = (name: string) => name === "objectbody.cpp"; // which the page gets right
  for (const name of readdirSync(folder).filter((each) => each.endsWith(".cpp") && !isOfBodies(each))) {
    for (const [, text] of readFileSync(`${folder}/${name}`, "utf8").matchAll(/"([^"\n]*[\u4e00-\u9fff][^"\n]*)"/g)) {
      if (isOther.test(text) || parts.includes(text)) continue;
      for (const part of kParts[text] ?? ["7"]) {
        const said = text.replace(/\{\}(?=不足|,)/, part).replace(/\{[^}]*\}/g, "7");
        assert(explained(said) !== said, `${name}: ${said}`);
        ++count;
      }
    }
  }
  assert(count > 30);
});

test("today's profit is one figure, with the percentage that belongs to it", () => {
  const row = capital({ todayFloatingProfit: -300, closeProfit: 100, preBalance: 9000, deposit: 1000, profitRatio: 5 });
  assert.equal(profitToday(row), -200);
  assert.equal(returnToday(row), -0.02);
  assert.equal(returnToday(capital()), 0);
});

test("net market value has the position's sign", () => {
  const field = kPositionFields.find((each) => each[3] === "Net market value");
  const row = { longMarketValue: 100, shortMarketValue: 350, netMarketValue: 250 } as Position;
  assert.equal(field && fieldValue(field, row), -250);
});
