import { accessText } from "./access";

// What the page needs of a browser. Tests put their own in its place.

export interface Socket {
  onopen: (() => void) | null;
  onmessage: ((event: { data: unknown }) => void) | null;
  onclose: ((event: { code: number; reason: string }) => void) | null;
  send(text: string): void;
  close(): void;
}

export interface Platform {
  clock(): number; // milliseconds that only ever grow
  now(): number; // milliseconds since 1970
  random(): number; // in [0, 1)
  randomText(length: number): string; // of a-z and 0-5
  later(action: () => void, milliseconds: number): number;
  cancel(timer: number): void;
  openSocket(): Socket;
  isSeen(): boolean; // the page is on the screen
  recall(name: string): string; // empty if nothing is stored
  remember(name: string, value: string): void; // an empty value removes it
  vibrate(): void;
  device: string; // names this tab
  terminal: string; // with which this tab works, kept over reloads; empty without a relay
  reload(): void;
}

const kVibrationMs = 200;

let at = Date.now();
let wall = at;
let ticks = performance.now();

// The device's clock may be set back, which would make old figures look fresh and put off every request. The browser's
// own clock may stop while the device sleeps. So take the larger step of the two.
function clock(): number {
  const [wallNow, ticksNow] = [Date.now(), performance.now()];
  at += Math.max(0, wallNow - wall, ticksNow - ticks);
  [wall, ticks] = [wallNow, ticksNow];
  return at;
}

// A browser that forbids storage only forgets sooner.
function attempt<T>(action: () => T, otherwise: T): T {
  try {
    return action();
  } catch {
    return otherwise;
  }
}

function randomText(length: number): string {
  const letters = "abcdefghijklmnopqrstuvwxyz012345"; // 32 of them, so that each is equally likely
  return Array.from(crypto.getRandomValues(new Uint8Array(length)), (byte) => letters[byte % 32]).join("");
}

// Kept over reloads: the gateway then closes the connection that a reload left behind.
function deviceName(): string {
  const made = randomText(12);
  return attempt(() => {
    const name = sessionStorage.getItem("device") ?? made;
    sessionStorage.setItem("device", name);
    return name;
  }, made);
}

export function browserPlatform(): Platform {
  const url = `${location.protocol === "https:" ? "wss" : "ws"}://${location.host}/ws`;
  return {
    clock,
    now: () => Date.now(),
    random: () => Math.random(),
    randomText,
    later: (action, milliseconds) => window.setTimeout(action, milliseconds),
    cancel: (timer) => clearTimeout(timer),
    openSocket: () => new WebSocket(url) as Socket,
    isSeen: () => document.visibilityState === "visible",
    recall: (name) => attempt(() => localStorage.getItem(name), null) ?? "",
    remember: (name, value) =>
      attempt(() => (value === "" ? localStorage.removeItem(name) : localStorage.setItem(name, value)), undefined),
    vibrate: () => void navigator.vibrate?.(kVibrationMs),
    device: deviceName(),
    get terminal() {
      return attempt(() => sessionStorage.getItem("terminal"), null) ?? "";
    },
    set terminal(name) {
      attempt(() => sessionStorage.setItem("terminal", name), undefined);
    },
    reload: () => location.reload(),
  };
}

// The access of the link, removed from the address bar so that it is neither seen nor copied.
export function takeTokenFromLink(): string {
  const found = /^#(terminal=[\w-]+&)?token=[\w-]+/.exec(location.hash);
  if (found === null) return "";
  history.replaceState(null, "", location.pathname + location.search);
  return accessText(found[0]);
}
