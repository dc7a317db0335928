import assert from "node:assert/strict";
import test from "node:test";
import { act, cancel } from "../../terminal/page/src/state/actions";
import { mergeFills, mergeOrders } from "../../terminal/page/src/state/merge";
import { areOffered, bodyOf, namedOffers } from "../../terminal/page/src/state/offers";
import { orderOf } from "../../terminal/page/src/ticket/ticket";
import { kNoTicket } from "../../terminal/page/src/ticket/ticket";
import { Order, Status, SyncOrder } from "../../terminal/page/src/wire/values";
import { fill, order, quote, FakeTerminal, settled } from "./fake";

const kDraft = orderOf({ ...kNoTicket, index: 1, hashCode: 7, price: "3300", volume: "2" }, quote(), 0);

async function loggedIn(rows: Order[] = [], stored = {}): Promise<FakeTerminal> {
  const terminal = new FakeTerminal(stored);
  terminal.rows["order.list"] = rows;
  await terminal.logIn();
  terminal.store.show({ route: "orders", sheet: "" });
  await terminal.answer();
  return terminal;
}

const outgoing = (terminal: FakeTerminal) => terminal.store.desk.outgoing.map((each) => each.state).join();

test("an order that is taken leaves no trace; a refused one says why", async () => {
  const terminal = await loggedIn();
  let placing = terminal.store.desk.place(kDraft, "name");
  assert.match(terminal.platform.recall("outgoing"), /"web key/);
  const frame = terminal.last("order.new");
  assert.deepEqual(frame.data, { orderList: [{ ...kDraft, source: `web ${frame.key}` }] });
  terminal.reply(frame, null);
  assert.equal(await placing, "");
  assert.equal(outgoing(terminal), "");
  placing = terminal.store.desk.place(kDraft, "name");
  terminal.reply(terminal.last("order.new"), null, "no");
  assert.equal(await placing, "no");
  assert.equal(terminal.platform.recall("outgoing"), "");
});

test("a lost reply: found in the list, or sent again under the same key", async () => {
  for (const arrived of [true, false]) {
    const terminal = await loggedIn();
    void terminal.store.desk.place(kDraft, "name");
    const first = terminal.last("order.new");
    terminal.platform.socket.onclose?.({ code: 1006, reason: "" });
    await settled();
    assert.equal(outgoing(terminal), "unknown");
    if (arrived) terminal.rows["order.list"] = [order({ source: `web ${first.key}` })];
    terminal.platform.pass(300);
    await terminal.open();
    await terminal.pass(500);
    assert.equal(outgoing(terminal), arrived ? "" : "missing");
    if (arrived) continue;
    void terminal.store.desk.sendAgain(terminal.store.desk.outgoing[0]);
    const { key, data } = terminal.last("order.new");
    assert.deepEqual({ key, data }, { key: first.key, data: first.data });
  }
});

test("a failure that leaves the outcome open is no refusal", async () => {
  for (const message of [
    "数据库 /a.db 写入失败 (disk I/O error), 结果未知: 请勿重新提交, 待恢复后查看列表",
    "the outcome of this request is not known: look at order.list before sending it anew under another key",
  ]) {
    const terminal = await loggedIn();
    const placing = terminal.store.desk.place(kDraft, "name");
    terminal.reply(terminal.last("order.new"), null, message);
    assert.equal(await placing, ""); // the ticket is not kept for another tap
    assert.equal(outgoing(terminal), "unknown");
    assert(terminal.store.desk.outgoing[0].failure.includes(message));
    const cancelled = act(terminal.store, "order.cancel", [], []);
    terminal.reply(terminal.last("order.cancel"), null, message);
    assert.equal((await cancelled).isKnown, false);
    await terminal.pass(3500);
    void terminal.store.desk.sendAgain(terminal.store.desk.outgoing[0]);
    terminal.reply(terminal.last("order.new"), null, message);
    await settled();
    assert.equal(outgoing(terminal), "missing"); // the key's answer stays: it can only be discarded
  }
});

test("an order that is refused after it was taken, or whose reply was lost, is told", async () => {
  for (const isTaken of [true, false]) {
    const terminal = await loggedIn();
    void terminal.store.desk.place(kDraft, "name");
    const { key } = terminal.last("order.new");
    if (isTaken) terminal.reply(terminal.last("order.new"), null);
    else await terminal.pass(5500);
    await settled();
    const refused = order({ source: `web ${key}`, status: Status.Refused, note: "用户撤单" });
    for (const seq of [1, 2]) terminal.push(seq, "order.push", [refused]);
    const told = terminal.store.notices.list.filter((notice) => notice.kind === "error").map((notice) => notice.text);
    assert.deepEqual(told, ["Refused: name\nCancelled by the user\n用户撤单"]);
    assert.equal(outgoing(terminal), "");
  }
});

test("a reply that cannot be read leaves the order's outcome open", async () => {
  const terminal = await loggedIn();
  const placing = terminal.store.desk.place(kDraft, "name");
  const { id } = terminal.last("order.new");
  terminal.platform.socket.say({ id, topic: "order.new", message: "", data: null, text: "{,}" });
  assert.equal(await placing, "");
  assert.equal(outgoing(terminal), "unknown");
});

test("an order like one without an outcome is noticed", async () => {
  const terminal = await loggedIn();
  void terminal.store.desk.place(kDraft, "name");
  const { desk } = terminal.store;
  assert(desk.hasUnsettled(kDraft));
  for (const change of [{ index: 2 }, { hashCode: 8 }, { side: 2 }]) assert(!desk.hasUnsettled({ ...kDraft, ...change }));
  terminal.reply(terminal.last("order.new"), null);
  await settled();
  assert(!desk.hasUnsettled(kDraft));
});

test("an order on its way is not missing, whatever a list says", async () => {
  const terminal = await loggedIn();
  void terminal.store.desk.place(kDraft, "name");
  terminal.store.asker.askNow(["orders"]);
  await terminal.answer();
  assert.equal(outgoing(terminal), "sending");
  await terminal.pass(5500);
  assert.equal(outgoing(terminal), "missing"); // unknown by age, and then not in a later list
});

test("a page that was closed does not forget an order, nor claim to know one of another day", async () => {
  const first = await loggedIn();
  void first.store.desk.place(kDraft, "name");
  const kept = { outgoing: first.platform.recall("outgoing") };
  assert.equal(outgoing(await loggedIn([], kept)), "missing");
  const later = new FakeTerminal(kept);
  later.platform.day += 86_400_000;
  later.rows["order.list"] = [];
  await later.logIn();
  await later.pass(500);
  assert.equal(outgoing(later), "untold");
});

test("a cancel names its own order, and goes out once", async () => {
  const terminal = await loggedIn([order({ index: 2, localOrderId: "55", hashCode: -4 })]);
  terminal.store.pickAccount(1);
  const [row] = terminal.store.lists.orders.rows;
  void cancel(terminal.store, [row]);
  void cancel(terminal.store, [row]);
  const cancels = terminal.platform.socket.of("order.cancel");
  assert.deepEqual(cancels.map((frame) => frame.data), [[{ index: 2, localOrderId: "55", hashCode: -4 }]]);
});

test("one refused cancel keeps none of the others", async () => {
  const terminal = await loggedIn();
  void cancel(terminal.store, [order(), order({ localOrderId: "1002" })]);
  const [first, second] = terminal.platform.socket.of("order.cancel");
  terminal.reply(first, null, "too late");
  terminal.reply(second, null);
  await settled();
  const told = terminal.store.notices.list.map((notice) => `${notice.kind}: ${notice.text}`);
  assert.deepEqual(told, ["info: Cancel sent", "error: 1 not cancelled: too late"]);
});

test("an amendment is placed once its order is known to be cancelled, and only then", async () => {
  for (const [status, sent] of [
    [Status.Cancelled, 1],
    [Status.Filled, 0],
    [Status.Working, 0],
  ] as const) {
    const terminal = await loggedIn([order()]);
    const amending = terminal.store.desk.amend(order(), kDraft, "name");
    terminal.reply(terminal.last("order.cancel"), null);
    await settled();
    assert.equal(terminal.platform.socket.of("order.new").length, 0);
    terminal.push(1, "order.push", [order({ status })]);
    await settled();
    assert.equal(terminal.platform.socket.of("order.new").length, sent);
    if (sent > 0) terminal.reply(terminal.last("order.new"), null);
    terminal.platform.pass(11_000);
    const kinds = { [Status.Cancelled]: "done", [Status.Filled]: "failed", [Status.Working]: "open" };
    assert.equal((await amending).kind, kinds[status]);
  }
});

test("an amendment is not placed if its order was filled in part meanwhile", async () => {
  const working = order({ volume: 10, fillVolume: 2 });
  for (const [fillVolume, sent] of [[2, 1], [5, 0]]) {
    const terminal = await loggedIn([working]);
    const amending = terminal.store.desk.amend(working, kDraft, "name");
    terminal.reply(terminal.last("order.cancel"), null);
    terminal.push(1, "order.push", [{ ...working, fillVolume, status: Status.Cancelled }]);
    await settled();
    assert.equal(terminal.platform.socket.of("order.new").length, sent);
    if (sent === 0) assert.deepEqual(await amending, { kind: "failed", failure: "3 filled meanwhile" });
  }
});

test("a cancel that is refused is not followed by an order", async () => {
  const terminal = await loggedIn([order()]);
  const amending = terminal.store.desk.amend(order(), kDraft, "name");
  terminal.reply(terminal.last("order.cancel"), null, "filled already");
  assert.deepEqual(await amending, { kind: "failed", failure: "filled already" });
  assert.equal(terminal.platform.socket.of("order.new").length, 0);
});

test("a reversal opens once its closing order is filled", async () => {
  const terminal = await loggedIn();
  const reversing = terminal.store.desk.reverse({ ...kDraft, combOffset: 4 }, kDraft, ["close", "open"]);
  const closing = terminal.last("order.new");
  terminal.reply(closing, null);
  await settled();
  assert.equal(terminal.platform.socket.of("order.new").length, 1);
  terminal.push(1, "order.push", [order({ status: Status.Filled, source: `web ${closing.key}` })]);
  await settled();
  const opening = terminal.last("order.new");
  assert.equal((opening.data as { orderList: { combOffset: number }[] }).orderList[0].combOffset, 1);
  terminal.reply(opening, null);
  assert.equal((await reversing).kind, "done");
});

test("pushes change rows in place, and none revives a finished order", () => {
  const done = order({ status: Status.Filled });
  assert.deepEqual(mergeOrders([done], [order()]), [done]);
  assert.deepEqual(mergeOrders([order()], [done]), [done]);
  const other = order({ index: 2 }); // the same number in another account
  assert.deepEqual(mergeOrders([order()], [other]), [order(), other]);
  assert.deepEqual(mergeFills([fill()], [fill(), fill({ fillId: "f2" })]), [fill(), fill({ fillId: "f2" })]);
});

test("offers that are alike have names of their own, and what is picked is what is sent", () => {
  const row = { index: 1, hashCode: 7, volume: 500, price: 3326, side: 1, combOffsetFlag: 1, userCode: "A1" } as SyncOrder;
  const offers = namedOffers([row, row, { ...row, volume: 20 }]);
  assert.equal(new Set(offers.map((offer) => offer.name)).size, 3);
  for (const change of [{ index: 2 }, { hashCode: 8 }, { side: 2 }, { combOffsetFlag: 4 }, { volume: 1 }]) {
    assert(!areOffered(namedOffers([row]), namedOffers([{ ...row, ...change }])), JSON.stringify(change));
  }
  const sent = { index: 1, hashCode: 7, volume: 500, price: 3326, side: 1, combOffsetFlag: 1 };
  assert.deepEqual(bodyOf([offers[1]]), [sent]);
  const moved = namedOffers([{ ...row, price: 3330 }, row]);
  assert(areOffered([offers[1]], moved)); // the price follows the market
  assert(!areOffered([offers[2]], moved));
});
