import assert from "node:assert/strict";
import test from "node:test";
import { accessText } from "../../terminal/page/src/access";
import { backoff } from "../../terminal/page/src/backoff";
import { Store } from "../../terminal/page/src/state/store";
import { probe } from "../../terminal/page/src/state/terminals";
import { kNoTicket, orderOf } from "../../terminal/page/src/ticket/ticket";
import { order, quote, FakeSocket, FakeTerminal, settled } from "./fake";

const kDraft = orderOf({ ...kNoTicket, index: 1, hashCode: 7, price: "3300", volume: "2" }, quote(), 0);
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

test("a relay's link names the terminal; several are kept apart, and a tab stays with its own", async () => {
  const link = "https://relay.example/#terminal=desk7&token=secret";
  assert.equal(accessText(` ${link} `), "terminal=desk7&token=secret");
  assert.equal(accessText("http://127.0.0.1:8700/#token=secret"), "secret");
  const terminal = new FakeTerminal({ token: "terminal=desk1&token=one\nterminal=desk7&token=seven" });
  const { store, platform } = terminal;
  assert.equal(store.terminal, "desk1");
  store.logIn(store.token);
  await terminal.open();
  const [login] = platform.socket.of("login");
  assert.deepEqual([login.terminal, login.token], ["desk1", "one"]);
  void store.desk.place(kDraft, "n");
  assert.match(platform.recall("desk1/outgoing"), /web key/);

  store.logIn(accessText(link));
  assert.deepEqual([platform.reloads, platform.terminal], [1, "desk7"]);
  const other = new Store(platform);
  assert.deepEqual([other.token, other.desk.outgoing.length], ["terminal=desk7&token=secret", 0]);
  platform.terminal = "desk1"; // as the first tab has it when it is loaded again
  const again = new Store(platform);
  assert.deepEqual([again.token, again.desk.outgoing.length], ["terminal=desk1&token=one", 1]);

  again.forget();
  assert.deepEqual([again.token, again.terminals.all()], ["", ["terminal=desk7&token=secret"]]);
  again.logIn("terminal=desk7&token=secret");
  assert.equal(platform.reloads, 2, "nothing of the forgotten terminal is left in memory");
});

test("who is away, and since when, is told by the banner's connection and by a login that only looks", async () => {
  const seen = "2026-01-02T03:04:05Z";
  const away = { id: 1, topic: "login", message: `the terminal desk1 is away; it was last seen at ${seen}`, data: null, seen };
  const terminal = new FakeTerminal({ token: "terminal=desk1&token=one" });
  const { store, platform } = terminal;
  store.logIn(store.token);
  platform.socket.onopen?.();
  platform.socket.say(away);
  await settled();
  platform.socket.onclose?.({ code: 1013, reason: "" });
  assert.deepEqual([store.link, store.connection.absence], ["waiting", { failure: away.message, seen: Date.parse(seen) }]);
  platform.pass(1000);
  await terminal.open();
  assert.equal(store.connection.absence, null);

  const looks = async (answer: (socket: FakeSocket) => void) => {
    const looking = probe(platform, { terminal: "desk2", token: "two" });
    const { socket } = platform;
    socket.onopen?.();
    const [login] = socket.of("login");
    assert.deepEqual([login.terminal, login.token], ["desk2", "two"]);
    assert(login.device !== platform.device, "would close the connection in use");
    answer(socket);
    const presence = await looking;
    assert(socket.isClosed);
    return presence;
  };
  assert.equal((await looks((socket) => socket.say(away)))?.seen, Date.parse(seen));
  const welcome = { name: "n", rights: ["see"], epoch: "e", seq: 0, resumed: false };
  const here = await looks((socket) => socket.say({ id: 1, topic: "login", message: "", data: welcome }));
  assert.equal(here?.failure, "");
  assert.equal(await looks(() => platform.pass(6000)), null);
  assert.equal(store.link, "online");
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
  await terminal.pass(60_000);
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
  terminal.platform.pass(64_000); // the device sleeps
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
