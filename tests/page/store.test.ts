import assert from "node:assert/strict";
import { readdirSync, readFileSync } from "node:fs";
import test from "node:test";
import { clearDraft } from "../../terminal/page/src/state/actions";
import { mayOrder } from "../../terminal/page/src/ticket/ticket";
import { kNoTicket } from "../../terminal/page/src/ticket/ticket";
import { account, fill, FakeTerminal, kNoViews, kRights, order, rates, settled } from "./fake";

const rowOf = (name: string): string => `#/orders/fills+row%3D1%3A${name}`;

test("only what is in sight is asked for, and nothing while the page is hidden", async () => {
  const terminal = new FakeTerminal();
  await terminal.logIn();
  const topics = () => new Set(terminal.platform.socket.sent.map((frame) => frame.topic));
  const atStart = ["account.list", "alert.list", "capital.list", "login", "position.list", "quote.list", "trader.list"];
  assert.deepEqual([...topics()].sort(), atStart);
  terminal.store.show({ route: "monitor", sheet: "" });
  assert(topics().has("monitor.list"));
  terminal.platform.seen = false;
  terminal.store.show({ route: "orders", sheet: "" });
  assert(!topics().has("order.list"));
});

test("a list in motion is not replaced under the finger, for a while", async () => {
  const terminal = new FakeTerminal();
  terminal.rows["position.list"] = [];
  await terminal.logIn();
  terminal.store.show({ route: "positions", sheet: "" });
  await terminal.answer();
  await terminal.pass(58_000);
  const asked = () => terminal.platform.socket.of("position.list").length;
  const before = asked();
  const scroll = (milliseconds: number) => {
    for (let at = 0; at < milliseconds; at += 100) {
      terminal.platform.pass(100);
      terminal.store.asker.scrolled();
      terminal.store.asker.askDue();
    }
  };
  scroll(4500);
  assert.equal(asked(), before);
  scroll(2000);
  assert.equal(asked(), before + 1);
  scroll(100);
  terminal.store.show({ route: "orders", sheet: "" });
  assert.equal(terminal.platform.socket.of("order.list").length, 1, "another view waits for no finger");
});

test("a push asks for the figures that it moves, once for all of a moment", async () => {
  const terminal = new FakeTerminal();
  terminal.rows["capital.list"] = [];
  await terminal.logIn();
  const before = terminal.platform.socket.of("capital.list").length;
  terminal.push(1, "order.push", [order()]);
  terminal.push(2, "trade.push", [fill()]);
  terminal.platform.pass(400);
  assert.equal(terminal.platform.socket.of("capital.list").length, before + 1);
  let seq = 3;
  for (const [route, topic] of [
    ["positions", "position.list"],
    ["assets/classes", "position.codetype.list"],
    ["monitor", "monitor.list"],
    ["monitor/sync", "monitor.sync.order.list"],
  ] as const) {
    terminal.rows[topic] = [];
    terminal.store.show({ route, sheet: "" });
    await terminal.answer();
    const asked = terminal.platform.socket.of(topic).length;
    terminal.push(seq++, "order.push", [order()]);
    terminal.platform.pass(400);
    assert.equal(terminal.platform.socket.of(topic).length, asked + 1, topic);
    await terminal.answer();
  }
});

test("fills are told by their terms; a burst shares one notice", async () => {
  const terminal = new FakeTerminal();
  await terminal.logIn();
  terminal.push(1, "trade.push", [fill()]);
  const [notice] = terminal.store.notices.list;
  assert.deepEqual([notice.kind, notice.text, notice.address], ["fill", "Buy to open rebar 2 @ 3,326 · A1", rowOf("f1")]);
  for (let seq = 2; seq < 6; ++seq) terminal.push(seq, "trade.push", [fill({ fillId: `f${seq}`, exchTimestamp: 10 + seq })]);
  assert.deepEqual(terminal.store.notices.list.map((each) => each.count), [5]);
  terminal.platform.pass(3000);
  terminal.push(6, "trade.push", [fill({ fillId: "f6", exchTimestamp: 30 })]);
  assert.deepEqual(terminal.store.notices.list.map((each) => each.count), [1, 5]);
  terminal.push(7, "trade.push", [fill({ fillId: "f6", exchTimestamp: 30 })]);
  assert.equal(terminal.store.notices.list[0].count, 1); // known already
  terminal.store.tell("sent");
  assert.deepEqual(terminal.store.notices.list.map((each) => each.kind), ["fill", "info", "fill"]);
});

test("a notice that grows is shown anew for its time", async () => {
  const terminal = new FakeTerminal();
  await terminal.logIn();
  for (let seq = 1; seq < 5; ++seq) {
    terminal.push(seq, "trade.push", [fill({ fillId: `f${seq}`, exchTimestamp: 10 + seq })]);
    await terminal.pass(1500);
  }
  await terminal.pass(3000);
  assert.deepEqual(terminal.store.notices.list.map((each) => each.count), [4]);
});

test("an answer that may be older than a push is followed by another", async () => {
  const terminal = new FakeTerminal();
  await terminal.logIn();
  terminal.store.show({ route: "orders", sheet: "" });
  const asked = () => terminal.platform.socket.of("order.list").length;
  terminal.push(1, "order.push", [order({ status: 2 })]);
  terminal.reply(terminal.last("order.list"), [order()]);
  await settled();
  assert.equal(asked(), 1);
  terminal.platform.pass(400);
  assert.equal(asked(), 2);
});

test("what comes while the page is hidden is kept until it is seen", async () => {
  const terminal = new FakeTerminal();
  await terminal.logIn();
  let notified = "";
  terminal.store.subscribe({ ...kNoViews, notify: (text) => (notified = text) });
  terminal.platform.seen = false;
  terminal.push(1, "trade.push", [fill()]);
  assert.equal(notified, "");
  terminal.store.prefer({ notifies: true });
  terminal.push(2, "trade.push", [fill({ fillId: "f2", exchTimestamp: 11 })]);
  assert.match(notified, /^Filled: Buy to open rebar/);
  terminal.platform.pass(60_000);
  assert.equal(terminal.store.notices.newFills, 2);
  terminal.platform.seen = true;
  terminal.rows["trader.list"] = [fill(), fill({ fillId: "f2", exchTimestamp: 11 })];
  await terminal.pass(4000);
  assert.equal(terminal.store.notices.list.length, 1);
  await terminal.pass(3000);
  assert.equal(terminal.store.notices.list.length, 0); // five seconds after it was seen
  assert.equal(terminal.store.notices.newFills, 2);
  terminal.store.show({ route: "orders", sheet: "" });
  assert.equal(terminal.store.notices.newFills, 0);
});

test("a page that notifies keeps its connection while hidden, and asks for what was missed", async () => {
  for (const notifies of [false, true]) {
    const terminal = new FakeTerminal();
    await terminal.logIn();
    let notified = "";
    terminal.store.subscribe({ ...kNoViews, notify: (_, address) => (notified = address) });
    terminal.store.prefer({ notifies });
    terminal.platform.seen = false;
    terminal.isMute = true;
    for (let second = 0; second < 40; ++second) await terminal.pass(1000);
    assert.equal(terminal.platform.sockets.length > 1, notifies);
    terminal.isMute = false;
    terminal.rows["trader.list"] = [fill()]; // the terminal was restarted: no push follows
    if (notifies) await terminal.open({ epoch: "other" });
    assert.equal(notified, notifies ? rowOf("f1") : "");
    const lists = terminal.platform.socket.sent.map((frame) => frame.topic).filter((topic) => topic.endsWith(".list"));
    if (notifies) assert.deepEqual(lists, ["trader.list", "alert.list"]);
  }
});

test("a fill of another day is another fill, whatever its number", async () => {
  const terminal = new FakeTerminal({ seenFills: '["1:f1@10"]' });
  terminal.rows["trader.list"] = [fill()];
  await terminal.logIn();
  terminal.rows["trader.list"] = [fill({ exchTimestamp: 86_400_010 })];
  terminal.store.asker.askNow(["fills"]);
  await terminal.answer();
  assert.deepEqual([terminal.store.notices.newFills, terminal.store.notices.list.length], [1, 1]);
});

test("fills of a time when the page was closed are new; those before the first visit are not", async () => {
  const terminal = new FakeTerminal({ seenFills: '["1:f1@10"]' });
  terminal.rows["trader.list"] = [fill(), fill({ fillId: "f2", exchTimestamp: 9 })]; // of an exchange whose clock is late
  await terminal.logIn();
  assert.deepEqual([terminal.store.notices.newFills, terminal.store.notices.list[0]?.address], [1, rowOf("f2")]);
  const first = new FakeTerminal();
  first.rows["trader.list"] = [fill()];
  await first.logIn();
  for (let round = 0; round < 2; ++round) {
    assert.deepEqual([first.store.notices.newFills, first.store.notices.list.length], [0, 0]);
    first.store.asker.askNow(["fills"]); // the same list again
    await first.answer();
  }
  first.rows["trader.list"] = [fill(), fill({ fillId: "f3", exchTimestamp: 30 })]; // no push came
  first.store.asker.askNow(["fills"]);
  await first.answer();
  assert.deepEqual(first.store.notices.list.map((notice) => notice.address), [rowOf("f3")]);
});

test("rights, and accounts that may order", async () => {
  for (const right of kRights) {
    const terminal = new FakeTerminal();
    await terminal.logIn({ rights: [right] });
    assert.deepEqual(kRights.filter((each) => terminal.store.may(each as "see")), [right]);
    const lists = terminal.platform.socket.of("account.list").length;
    assert.equal(lists > 0, right === "see");
  }
  assert(mayOrder(account()));
  assert(!mayOrder(account({ ordinaryOrderPrivilege: false })) && !mayOrder(account({ accountStatus: 0 })));
});

test("drafts live through a reload, each account has its own, and forgetting removes all", async () => {
  const terminal = new FakeTerminal();
  await terminal.logIn();
  terminal.store.draft({ ...kNoTicket, index: 1, hashCode: 7, price: "1" });
  terminal.store.draft({ ...kNoTicket, index: 2, hashCode: 8, price: "2" });
  const reloaded = new FakeTerminal({ drafts: terminal.platform.recall("drafts") });
  assert.equal(reloaded.store.drafts.current?.price, "2");
  assert.equal(reloaded.store.drafts.of(1)?.price, "1");
  clearDraft(reloaded.store, 2);
  assert.equal(reloaded.store.drafts.current, undefined);
  terminal.store.forget();
  assert.deepEqual([...terminal.platform.stored.keys()], []);
  assert.equal(terminal.platform.socket.isClosed, true);
});

test("the ticket's rates are those of its account and instrument", async () => {
  const terminal = new FakeTerminal();
  terminal.rows["order.rates"] = rates();
  await terminal.logIn();
  terminal.store.show({ route: "assets", sheet: "trade" });
  terminal.store.draft({ ...kNoTicket, index: 1, hashCode: 7 });
  const isInformed = (hashCode: number) => terminal.store.asker.isInformed({ index: 1, hashCode }, terminal.platform.at);
  assert(!isInformed(7)); // nothing is confirmed blindly
  terminal.rows["position.list"] = [];
  await terminal.answer();
  assert(isInformed(7));
  assert(!isInformed(8));
  assert.deepEqual(terminal.last("order.rates").data, { index: 1, hashCode: 7 });
  assert.equal(terminal.store.asker.ratesOf({ index: 1, hashCode: 7 })?.longByMoney, 0.1);
  assert.equal(terminal.store.asker.ratesOf({ index: 2, hashCode: 7 }), undefined);
  terminal.store.show({ route: "assets", sheet: "" });
  terminal.store.draft({ ...kNoTicket, index: 1, hashCode: 9 });
  terminal.store.show({ route: "assets", sheet: "review" }); // at once, however shortly after the last
  assert.deepEqual(terminal.last("order.rates").data, { index: 1, hashCode: 9 });
  assert(["capital.list", "position.list"].every((topic) => terminal.last(topic) !== undefined));
  const asked = terminal.platform.socket.of("order.rates").length;
  await terminal.pass(62_000);
  assert.equal(terminal.platform.socket.of("order.rates").length, asked + 1); // they may change
});

test("the terminal's notices and refusals of pushes are told", async () => {
  const terminal = new FakeTerminal();
  await terminal.logIn();
  terminal.push(1, "terminal.notice", null, "委托数量 0 必须大于 0");
  await settled();
  assert.equal(terminal.store.notices.list[0].text, "Volume 0 must be above 0\n委托数量 0 必须大于 0");
  await terminal.pass(60_000);
  assert.equal(terminal.store.notices.list.length, 1); // an error stays
});

test("the style sheets keep to the scales", () => {
  const source = process.env.PAGE_SOURCE as string;
  const sheets = ["styles", "views"].flatMap((folder) =>
    readdirSync(`${source}/${folder}`).filter((name) => name.endsWith(".css")).map((name) => `${folder}/${name}`),
  );
  assert(sheets.length > 5);
  const scaled = /^\s*(font-size|padding[a-z-]*|margin[a-z-]*|gap|border-radius):\s*(.*);/;
  const raw = /(?<![\w(-])[1-9.]\d*(\.\d+)?(px|rem|em)\b/;
  for (const name of sheets.filter((each) => !each.endsWith("scales.css"))) {
    for (const line of readFileSync(`${source}/${name}`, "utf8").split("\n")) {
      const found = scaled.exec(line);
      const value = found?.[2].replace(/calc\(.*\)/g, "") ?? "";
      assert(!raw.test(value), `${name}: ${line.trim()} is on no scale`);
      assert(!/#[0-9a-f]{3,8}\b|rgb\(/.test(line), `${name}: ${line.trim()} is a colour of its own`);
    }
  }
});
