import assert from "node:assert/strict";
import test from "node:test";
import { alert, FakeTerminal, kNoViews } from "./fake";

const fired = alert({ fired: Date.UTC(2026, 0, 2, 7), firedPrice: 3331 });

async function openPage(...alerts: (typeof fired)[]): Promise<FakeTerminal> {
  const page = new FakeTerminal();
  page.rows["alert.list"] = alerts;
  await page.logIn();
  await page.pass(500);
  return page;
}

const texts = (page: FakeTerminal) => page.store.notices.list.map((notice) => notice.text.split(" at ")[0]);
const cleared = (page: FakeTerminal) => page.platform.socket.of("alert.clear").map((frame) => frame.data);

async function reconnect(page: FakeTerminal): Promise<void> {
  page.store.connection.lose();
  page.platform.pass(1000);
  await page.open();
  await page.pass(500);
}

test("an alert that fires, or did before the page was opened, is shown once and then cleared", async () => {
  for (const isPushed of [true, false]) {
    const page = await openPage(isPushed ? alert() : fired, alert({ id: 2, above: false, price: 3300 }));
    if (isPushed) page.pushAlerts(fired);
    await page.pass(500);
    page.pushAlerts(fired);
    await page.pass(60_000);
    assert.deepEqual(texts(page), ["Alert: rebar ≥ 3,330, reached 3,331"]);
    assert.deepEqual(cleared(page), [[1]]);
    page.reply(page.last("alert.clear"), [alert({ id: 2, above: false, price: 3300 })]);
    await page.pass(500);
    assert.deepEqual(page.store.alerts.waiting.map((each) => each.id), [2]);
    page.store.notices.dismiss(page.store.notices.list[0]);
    await reconnect(page);
    assert.deepEqual(texts(page), []);
  }
});

test("an alert whose deletion is lost is not shown again, and cleared at the next login", async () => {
  const page = await openPage(fired);
  await reconnect(page);
  assert.deepEqual([texts(page).length, cleared(page)], [1, [[1]]]);
  page.store.notices.dismiss(page.store.notices.list[0]);
  page.reply(page.last("alert.clear"), null, "gateway.db is locked");
  await page.pass(5000);
  assert.deepEqual([texts(page).length, cleared(page)], [0, [[1]]], "not at once again");
});

test("an alert that nobody has seen yet stays at the terminal", async () => {
  const page = await openPage();
  const notified: string[] = [];
  page.store.subscribe({ ...kNoViews, notify: (title, address) => notified.push(title.split(" at ")[0], address) });
  page.store.prefer({ notifies: true, vibrates: true });
  page.platform.seen = false;
  page.pushAlerts(fired);
  await page.pass(60_000);
  assert.deepEqual(notified, ["Alert: rebar ≥ 3,330, reached 3,331", "#/quotes+alerts%3D7"]);
  assert.deepEqual([page.platform.vibrations, cleared(page)], [1, []]);
  const more = Array.from({ length: 30 }, (_, n) => ({ ...fired, id: n + 2 }));
  page.pushAlerts(...more);
  page.platform.seen = true;
  await page.pass(500);
  assert.deepEqual(cleared(page), [[31]], "the only one on the screen");
  for (const notice of page.store.notices.list) page.store.notices.dismiss(notice);
  assert.equal(cleared(page).length, 31, "none was dropped");
});

test("an alert waits for the name of its instrument", async () => {
  const page = new FakeTerminal();
  const quotes = page.rows["quote.list"];
  delete page.rows["quote.list"];
  page.rows["alert.list"] = [fired];
  await page.logIn();
  assert.deepEqual(texts(page), []);
  page.rows["quote.list"] = quotes;
  await page.answer();
  assert.deepEqual(texts(page), ["Alert: rebar ≥ 3,330, reached 3,331"]);
});

test("a token that may not see asks for no alerts", async () => {
  const page = new FakeTerminal();
  await page.logIn({ rights: ["trade"] });
  assert.deepEqual(page.platform.socket.of("alert.list"), []);
});
