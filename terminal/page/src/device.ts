// What this device remembers. A browser that forbids storage only forgets sooner.

function attempt<T>(action: () => T, otherwise: T): T {
  try {
    return action();
  } catch {
    return otherwise;
  }
}

export function recall(name: string): string {
  return attempt(() => localStorage.getItem(name), null) ?? "";
}

export function remember(name: string, value: string): void {
  attempt(() => (value === "" ? localStorage.removeItem(name) : localStorage.setItem(name, value)), undefined);
}

// The token of the link, taken out of the address bar so that it is neither seen nor copied on.
export function takeTokenFromLink(): string {
  const found = /^#token=([\w-]+)/.exec(location.hash);
  if (found === null) return "";
  history.replaceState(null, "", location.pathname + location.search);
  return found[1];
}

export function randomText(length: number): string {
  const letters = "abcdefghijklmnopqrstuvwxyz012345"; // 32 of them, so that each is as likely
  return Array.from(crypto.getRandomValues(new Uint8Array(length)), (byte) => letters[byte % 32]).join("");
}

// Names this tab, over reloads too: the gateway closes the connection that a reload left behind.
export function deviceName(): string {
  const made = randomText(12);
  return attempt(() => {
    const name = sessionStorage.getItem("device") ?? made;
    sessionStorage.setItem("device", name);
    return name;
  }, made);
}
