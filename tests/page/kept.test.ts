import assert from "node:assert/strict";
import test from "node:test";
import { account, fill, FakeTerminal, order } from "./fake";

// A page that was logged in and is hidden, as a phone leaves it.
async function closedPage(): Promise<FakeTerminal> {
  const page = new FakeTerminal();
  page.rows["order.list"] = [order()];
  await page.logIn();
  page.store.show({ route: "orders", sheet: "" });
  await page.answer();
  page.store.keep();
  return page;
}

test("the last figures are there at the next opening, stale and with their time", async () => {
  const before = await closedPage();
  const page = new FakeTerminal(Object.fromEntries(before.platform.stored), 3_600_000);
  page.store.logIn("secret");
  const { orders, margin } = page.store.lists;
  assert.deepEqual(orders.rows, [order()]);
  assert.equal(page.platform.clock() - orders.at, 3_600_000);
  assert.equal(margin.at, 0);
  assert.equal(page.store.quote(7)?.codeName, "rebar");
  assert(page.store.isStale("orders"));
  page.rows["order.list"] = [];
  page.store.show({ route: "orders", sheet: "" });
  await page.open();
  assert.deepEqual(orders.rows, []);
  assert(!page.store.isStale("orders"));
});

test("kept figures go with the device's token, and never show to another one", async () => {
  const leave: ((page: FakeTerminal) => void)[] = [
    (page) => page.store.forget(),
    (page) => page.store.logIn("another"),
    (page) => {
      page.store.logIn("secret");
      page.platform.socket.onclose?.({ code: 4403, reason: "revoked" });
    },
  ];
  for (const each of leave) {
    const page = await closedPage();
    assert(page.platform.recall("figures") !== "");
    each(page);
    assert.equal(page.platform.recall("figures"), "");
    page.platform.remember("token", ""); // by another tab
    page.store.keep();
    assert.equal(page.platform.recall("figures"), "");
  }
});

test("kept rows that break the contract or are another token's are not shown", () => {
  const lists = [["orders", { at: 1, rows: [{ price: "1" }] }], ["accounts", { at: 1, rows: [account()] }], ["x", {}]];
  for (const [figures, count] of [
    [{ token: "secret", lists }, 1],
    [{ token: "another", lists }, 0],
    ["{", 0],
  ] as const) {
    const page = new FakeTerminal({ figures: JSON.stringify(figures), token: "secret" });
      assert.equal(page.store.lists.orders.at, 0);
    assert.equal(page.store.lists.accounts.rows.length, count);
  }
});

test("a list is asked for when it is opened and once a minute", async () => {
  const page = await closedPage();
  const asked = () => page.platform.socket.of("order.list").length;
  assert.equal(asked(), 1);
  await page.pass(58_000);
  assert.equal(asked(), 1);
  await page.pass(4000);
  assert.equal(asked(), 2);
  page.store.show({ route: "positions", sheet: "" });
  page.store.show({ route: "orders", sheet: "" });
  assert.equal(asked(), 3);
});

test("a fill vibrates if the user wants it", async () => {
  const page = new FakeTerminal();
  await page.logIn();
  page.push(1, "trade.push", [fill()]);
  assert.equal(page.platform.vibrations, 0);
  page.store.prefer({ vibrates: true });
  page.push(2, "trade.push", [fill({ fillId: "f2" })]);
  assert.equal(page.platform.vibrations, 1);
});
