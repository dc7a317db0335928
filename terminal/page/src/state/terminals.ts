import { Access, readAccess } from "../access";
import { Platform } from "../platform";
import { readFrame } from "../wire/frames";

const kProbeMs = 5000;

const nameOf = (text: string): string => readAccess(text).terminal ?? "";

// The terminals whose tokens this device keeps: those of a relay, or the only one at its own address. Each tab works
// with one of them, also over reloads; a new tab starts with the one that was used last.
export class Terminals {
  constructor(private readonly platform: Platform) {
    platform.terminal = this.name;
  }

  // What this tab logs in with, see Access; empty if nothing is kept.
  get current(): string {
    const texts = this.all();
    return texts.find((text) => nameOf(text) === this.platform.terminal) ?? texts[0] ?? "";
  }

  get name(): string {
    return nameOf(this.current);
  }

  // The last one used is first. Other tabs may have changed them.
  all(): string[] {
    const texts = this.platform.recall("token").split("\n");
    return texts.filter((text) => text !== "");
  }

  // Makes it this tab's, in place of what was kept for the same terminal.
  keep(text: string): void {
    this.write([text, ...this.all().filter((each) => nameOf(each) !== nameOf(text))]);
    this.platform.terminal = nameOf(text);
  }

  drop(text: string): void {
    this.write(this.all().filter((each) => each !== text));
  }

  private write(texts: string[]): void {
    this.platform.remember("token", texts.join("\n"));
  }
}

// What is kept of one terminal stays apart from what is kept of the others.
export function keptFor(platform: Platform, terminal: string): Platform {
  const own = (name: string): string => (terminal === "" ? name : `${terminal}/${name}`);
  return {
    ...platform,
    recall: (name) => platform.recall(own(name)),
    remember: (name, value) => platform.remember(own(name), value),
  };
}

// Whether a terminal can be reached.
export interface Presence {
  failure: string; // why not; empty if it can
  seen: number; // when a relay last saw it, in milliseconds since 1970; 0 if that is not told
}

export function presenceOf(failure: { message: string; seen?: string }): Presence {
  return { failure: failure.message, seen: Date.parse(failure.seen ?? "") || 0 };
}

// Tries a login. Its answer tells; null without one.
export function probe(platform: Platform, access: Access): Promise<Presence | null> {
  return new Promise((settle) => {
    const socket = platform.openSocket();
    const end = (presence: Presence | null) => {
      platform.cancel(timer);
      socket.onopen = socket.onmessage = socket.onclose = null;
      socket.close();
      settle(presence);
    };
    const timer = platform.later(() => end(null), kProbeMs);
    socket.onopen = () =>
      socket.send(JSON.stringify({ id: 1, topic: "login", ...access, device: `${platform.device} looks` }));
    socket.onclose = () => end(null);
    socket.onmessage = (event) => {
      const frame = readFrame(String(event.data), () => "login");
      end(frame.kind === "reply" ? presenceOf({ message: "" }) : frame.kind === "failure" ? presenceOf(frame) : null);
    };
  });
}
