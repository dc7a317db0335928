// Runs in the page before its own scripts: what the tests watch there, and what they do in one go.
window.sent = []; // the frames of the page
window.heard = []; // topics of the terminal's frames
const Socket = WebSocket;
window.WebSocket = class extends Socket {
  send(text) {
    window.sent.push(JSON.parse(text));
    super.send(text);
  }
  // A test may lose what the terminal answers, or narrow the rights that it grants.
  set onmessage(listener) {
    super.onmessage = listener && ((event) => {
      const frame = JSON.parse(event.data);
      window.heard.push(frame.topic);
      const rights = localStorage.getItem("test-rights");
      if (frame.topic === "login" && rights) frame.data = { ...frame.data, rights: JSON.parse(rights) };
      if (frame.seq && frame.seq === window.lostSeq) return;
      if (!window.isDeaf) listener({ data: JSON.stringify(frame) });
    });
  }
};

// The page's pauses are a tenth as long. Those that an answer may need are not, unless a test is hasty.
const later = setTimeout;
window.setTimeout = (action, pause) =>
  later(action, pause < 5000 || localStorage.getItem("test-hasty") ? pause / 10 : pause);

// Seconds pass at once: what is done again and again is done, and the clocks jump. No other time passes from then on.
const clock = performance.now.bind(performance);
let skipped = 0;
let stopped = null;
for (const each of [Date, performance]) {
  const now = each.now.bind(each);
  const start = now() - clock();
  each.now = () => start + (stopped ?? clock()) + skipped;
}
const ticks = [];
const every = setInterval;
window.setInterval = (action, pause) => (ticks.push(action), every(action, pause));
window.pass = async (seconds, step = 1) => {
  stopped ??= clock();
  for (let passed = 0; passed < seconds; passed += step) {
    skipped += 1000 * step;
    for (const tick of ticks) tick();
    await new Promise((done) => later(done, 5));
  }
};

// What `look` returns as soon as it is something; null if it never is.
window.until = (look, patience) =>
  new Promise((done) => {
    const end = clock() + patience;
    let timer = 0;
    const again = () => {
      const seen = look();
      if (!seen && clock() < end) return void (timer = later(again, 50));
      watcher.disconnect();
      done(seen || null);
    };
    const watcher = new MutationObserver(() => {
      clearTimeout(timer);
      timer = later(again, 0);
    });
    watcher.observe(document, { subtree: true, childList: true, attributes: true, characterData: true });
    again();
  });
window.find = (selector, text) =>
  [...document.querySelectorAll(selector)].find((each) => (each.innerText ?? each.textContent).includes(text));
window.see = (patience, selector, text) => until(() => find(selector, text), patience);
window.gone = (patience, selector) => until(() => !document.querySelector(selector), patience);

// A finger: what is covered or disabled is not tapped, nor what goes as it is pressed. A tap that replaces the page ends
// this script too, and is not done again.
window.tap = async (patience, selector, text, name) => {
  if (sessionStorage.getItem("last-tap") === name) return true;
  const element = await until(() => {
    const it = find(selector, text);
    if (!it || it.matches(":disabled")) return null;
    const isFixed = it.closest(".tabs, header") !== null;
    const box = it.getBoundingClientRect();
    if (it.closest("dialog")) it.scrollIntoView({ block: "nearest" });
    else if (!isFixed && (box.top < 60 || box.bottom > innerHeight - 70)) it.scrollIntoView({ block: "center" });
    const { x, y, width, height } = it.getBoundingClientRect();
    return it.contains(document.elementFromPoint(x + width / 2, y + height / 2)) ? it : null;
  }, patience);
  if (element?.dispatchEvent(new MouseEvent("mousedown", { bubbles: true, cancelable: true }))) {
    const control = element.closest("a, button, input, select, summary");
    if (control) control.focus({ preventScroll: true });
    else document.activeElement.blur();
  }
  await new Promise((done) => later(done, 0));
  if (!element?.isConnected) return null;
  sessionStorage.setItem("last-tap", name);
  element.click();
  return true;
};

window.fill = (patience, selector, text) =>
  until(() => {
    const field = find(selector, "");
    field?.focus();
    field?.select();
    return field && document.execCommand(text === "" ? "delete" : "insertText", false, text);
  }, patience);

// Picks from the last list of this label.
window.choose = (patience, label, text) =>
  until(() => {
    const picks = [...document.querySelectorAll(".pick")];
    const pick = picks.findLast((each) => each.querySelector(".hidden").textContent === label)?.querySelector("select");
    const option = [...(pick?.options ?? [])].find((each) => each.text.startsWith(text));
    if (!option) return false;
    pick.value = option.value;
    return pick.dispatchEvent(new Event("change", { bubbles: true }));
  }, patience);
