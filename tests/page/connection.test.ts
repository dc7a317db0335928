import assert from "node:assert/strict";
import test from "node:test";
import { accessText } from "../../terminal/page/src/access";
import { backoff } from "../../terminal/page/src/backoff";
import { order, FakeTerminal, settled } from "./fake";

const kOrders = { "order.list": [order()] };

test("attempts are spread and no rarer than half a minute", () => {
  assert.deepEqual([0, 1, 2].map((attempt) => backoff(attempt, 0)), [250, 500, 1000]);
  assert.equal(backoff(0, 1), 500);
  assert.equal(backoff(50, 1), 30_000);
});

test("a lost connection comes back, and resumes after the last push", async () => {
  const terminal = new FakeTerminal();
  await terminal.logIn({ seq: 4 });
  terminal.push(5, "terminal.notice", null, "hello");
  terminal.platform.socket.onclose?.({ code: 1006, reason: "" });
  assert.equal(terminal.store.link, "waiting");
  terminal.platform.pass(300);
  assert.equal(terminal.platform.sockets.length, 2);
  terminal.platform.socket.onopen?.();
  const [login] = terminal.platform.socket.of("login");
  assert.deepEqual([login.token, login.device, login.resume], ["secret", "device", { epoch: "e", seq: 5 }]);
});

test("each break starts with a short wait, and the network's return ends it", async () => {
  const terminal = new FakeTerminal();
  await terminal.logIn();
  for (let round = 2; round < 7; ++round) {
    terminal.platform.socket.onclose?.({ code: 1006, reason: "" });
    if (round === 6) terminal.store.connection.wake();
    else terminal.platform.pass(300);
    assert.equal(terminal.platform.sockets.length, round);
    await terminal.open();
  }
});

test("the link of a relay names the terminal, and so does each login", async () => {
  const link = "https://relay.example/#terminal=desk7&token=secret";
  assert.equal(accessText(` ${link} `), "terminal=desk7&token=secret");
  assert.equal(accessText("http://127.0.0.1:8700/#token=secret"), "secret");
  const terminal = new FakeTerminal();
  terminal.store.logIn(accessText(link));
  terminal.platform.socket.onopen?.();
  const [login] = terminal.platform.socket.of("login");
  assert.deepEqual([login.terminal, login.token], ["desk7", "secret"]);
});

test("missed pushes that follow a resumed login are taken, and known ones are not taken twice", async () => {
  const terminal = new FakeTerminal();
  await terminal.logIn({ seq: 4 });
  terminal.platform.socket.onclose?.({ code: 1006, reason: "" });
  terminal.platform.pass(300);
  await terminal.open({ seq: 6, resumed: true });
  for (const seq of [4, 5, 6, 6]) terminal.push(seq, "terminal.notice", null, `n${seq}`);
  assert.deepEqual(terminal.store.notices.list.map((notice) => notice.text), ["n6", "n5"]);
});

test("a gap in the pushes, and one that cannot be read, lead to fresh lists", async () => {
  for (const say of [
    (terminal: FakeTerminal) => terminal.push(3, "terminal.notice", null, "late"),
    (terminal: FakeTerminal) => terminal.push(1, "order.push", [{ ...order(), price: "?" }]),
    (terminal: FakeTerminal) => terminal.platform.socket.say("not JSON"),
  ]) {
    const terminal = new FakeTerminal();
    await terminal.logIn();
    const before = terminal.platform.socket.of("quote.list").length;
    say(terminal);
    await settled();
    assert.equal(terminal.platform.socket.of("quote.list").length, before + 1);
  }
});

test("a silent terminal is stale after five seconds, and gone after ten", async () => {
  const terminal = new FakeTerminal();
  terminal.rows = { ...terminal.rows, ...kOrders };
  await terminal.logIn();
  terminal.store.show({ route: "orders", sheet: "" });
  await terminal.answer();
  await terminal.pass(20_000); // a sign of life is asked for, though no list is due
  assert(!terminal.store.isStale("orders"));
  terminal.isMute = true;
  await terminal.pass(5000);
  assert(!terminal.store.isStale("orders"));
  await terminal.pass(1000);
  assert(terminal.store.isStale("orders"));
  assert.equal(terminal.store.link, "online");
  await terminal.pass(5000);
  assert(terminal.store.link !== "online");
});

test("a list that is not answered is stale, though the terminal lives", async () => {
  const terminal = new FakeTerminal();
  terminal.rows = { ...terminal.rows, ...kOrders };
  await terminal.logIn();
  terminal.store.show({ route: "orders", sheet: "" });
  await terminal.answer();
  assert(!terminal.store.isStale("orders"));
  delete terminal.rows["order.list"];
  await terminal.pass(30_000);
  assert(!terminal.store.isStale("orders"));
  await terminal.pass(6500);
  assert(terminal.store.isStale("orders"));
  assert.equal(terminal.store.link, "online");
});

test("a list is stale by its age, whatever kept it from being asked for", async () => {
  const terminal = new FakeTerminal();
  terminal.rows = { ...terminal.rows, ...kOrders };
  await terminal.logIn();
  terminal.store.show({ route: "orders", sheet: "" });
  await terminal.answer();
  terminal.platform.pass(34_000); // the device sleeps
  terminal.store.update();
  assert(!terminal.store.isStale("orders"));
  terminal.platform.pass(2000);
  terminal.store.update();
  assert(terminal.store.isStale("orders"));
});

test("what was known before a break is stale until it is fresh", async () => {
  const terminal = new FakeTerminal();
  terminal.rows = { ...terminal.rows, ...kOrders };
  await terminal.logIn();
  terminal.store.show({ route: "orders", sheet: "" });
  await terminal.answer();
  terminal.store.connection.lose(); // the browser is offline
  assert(terminal.store.isStale("orders"));
  terminal.isMute = true;
  terminal.platform.pass(300);
  await terminal.open();
  assert(terminal.store.isStale("orders"));
  terminal.isMute = false;
  await terminal.answer();
  assert(!terminal.store.isStale("orders"));
});

test("close codes: another tab, too many attempts, a token that is no good", async () => {
  const closed = async (code: number) => {
    const terminal = new FakeTerminal();
    await terminal.logIn();
    terminal.platform.socket.onclose?.({ code, reason: "why" });
    terminal.platform.pass(2000);
    return terminal;
  };
  const replaced = await closed(4409);
  assert.deepEqual([replaced.store.link, replaced.platform.sockets.length], ["replaced", 1]);
  const crowded = await closed(4429);
  assert.deepEqual([crowded.store.link, crowded.platform.sockets.length], ["waiting", 1]);
  const revoked = await closed(4403);
  assert.deepEqual([revoked.store.link, revoked.store.token, revoked.store.loginFailure], ["off", "", "why"]);
  assert.equal(revoked.platform.recall("token"), "");
});

test("a wrong token ends in the login, with the terminal's text", async () => {
  const terminal = new FakeTerminal();
  terminal.store.logIn("wrong");
  terminal.platform.socket.onopen?.();
  const [login] = terminal.platform.socket.of("login");
  terminal.platform.socket.say({ id: login.id, topic: "login", message: "wrong token: take one", data: null });
  await settled();
  terminal.platform.socket.onclose?.({ code: 4401, reason: "wrong token" });
  assert.match(terminal.store.loginFailure, /wrong token: take one/);
  assert.equal(terminal.platform.recall("token"), "");
});
