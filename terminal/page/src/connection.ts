import { readAccess } from "./access";
import { backoff } from "./backoff";
import { Platform, Socket } from "./platform";
import { Presence, presenceOf } from "./state/terminals";
import { isUnclear, readFrame } from "./wire/frames";
import { Alert, Bodies, Login, Price, Replies } from "./wire/values";

// The outcome of a request. "lost": it may have been done or not. "unclear": the same, as the terminal itself reports.
// "unsent": it was not done.
export type Reply<Data = unknown> =
  | { kind: "done"; data: Data }
  | { kind: "failed"; message: string; seen?: string }
  | { kind: "unclear"; message: string }
  | { kind: "garbled"; text: string }
  | { kind: "lost" }
  | { kind: "unsent" };

export type LinkState = "off" | "connecting" | "online" | "waiting" | "replaced";

export const isKnown = ({ kind }: Reply): boolean => kind !== "lost" && kind !== "garbled" && kind !== "unclear";

export interface Push {
  topic: string;
  message: string;
  data: unknown;
}

export interface ConnectionEvents {
  onState(): void;
  onLogin(login: Login): void;
  onRefused(message: string): void; // the token is invalid; no further attempt is made
  onPush(push: Push): void;
  onPrices(rows: Price[]): void;
  onAlerts(rows: Alert[]): void; // that have fired
  onGap(): void; // pushes are missing, or one could not be read
}

const kQuietMs = 1500; // after this silence, ask for a sign of life
const kHiddenQuietMs = 15_000; // the same while the page is hidden: each one costs a phone's battery
const kStaleMs = 5000; // the terminal does not answer
const kSilenceMs = 10_000; // the peer is gone, whatever the socket believes
const kConnectMs = 10_000;
const kProbe = "terminal.info"; // is answered quickly, and by any terminal
const kNoLogin = 4401;
const kNotEntitled = 4403;
const kNoTerminal = 4404;
const kReplaced = 4409;
const kTooMany = 4429;
const kLateAttempt = 5;

interface Waiting {
  topic: string;
  settle: (reply: Reply) => void;
}

// The one WebSocket: logs in, reconnects by itself, matches answers to requests.
export class Connection {
  state: LinkState = "off";
  retryAt = 0; // by clock(), while "waiting"
  absence: Presence | null = null; // what the last login was answered instead
  private socket: Socket | null = null;
  private token = ""; // see Access
  private refusal = "";
  private attempts = 0;
  private lastId = 0;
  private waiting = new Map<unknown, Waiting>();
  private heardAt = 0;
  private timer = 0;
  private epoch: string | undefined;
  private seq = 0;

  constructor(
    private readonly platform: Platform,
    private readonly events: ConnectionEvents,
  ) {}

  start(token: string): void {
    this.stop();
    this.token = token;
    this.epoch = undefined;
    this.open();
  }

  stop(): void {
    this.drop();
    this.setState("off");
  }

  retryNow(): void {
    if (this.state === "waiting" || this.state === "replaced") this.open();
  }

  // To be called when the device wakes up: what came meanwhile has yet to be delivered.
  wake(): void {
    this.heardAt = this.platform.clock();
    if (this.state === "waiting") this.open();
  }

  // To be called when the device has lost its network: the socket would notice much later.
  lose(): void {
    if (this.state === "connecting" || this.state === "online") this.onGone(0, "");
  }

  request<Topic extends keyof Bodies & keyof Replies>(
    topic: Topic,
    data: Bodies[Topic],
    key?: string,
  ): Promise<Reply<Replies[Topic]>> {
    if (this.state !== "online") return Promise.resolve({ kind: "unsent" });
    return this.send(topic, { data, key }) as Promise<Reply<Replies[Topic]>>;
  }

  // Whether requests have been waiting too long for anything to come.
  isSilent(now: number): boolean {
    return this.waiting.size > 0 && now - this.heardAt > kStaleMs;
  }

  // To be called at least once a second while the page is seen, and now and then while it is hidden.
  check(now: number): void {
    const silence = now - this.heardAt;
    if (this.state === "connecting" && silence > kConnectMs) return this.onGone(0, "");
    if (this.state !== "online") return;
    if (this.waiting.size > 0 && silence > kSilenceMs) return this.onGone(0, "");
    const isProbed = [...this.waiting.values()].some(({ topic }) => topic === kProbe);
    const quiet = this.platform.isSeen() ? kQuietMs : kHiddenQuietMs;
    if (silence > quiet && !isProbed) void this.request(kProbe, undefined);
  }

  private setState(state: LinkState): void {
    if (this.state === state) return;
    this.state = state;
    this.events.onState();
  }

  private open(): void {
    this.drop();
    this.refusal = "";
    this.heardAt = this.platform.clock();
    const socket = this.platform.openSocket();
    this.socket = socket;
    socket.onopen = () => void this.login();
    socket.onmessage = (event) => this.onMessage(String(event.data));
    socket.onclose = (event) => this.onGone(event.code, event.reason);
    this.setState("connecting");
  }

  // Detaches the old socket first: nothing more is heard from it.
  private drop(): void {
    this.platform.cancel(this.timer);
    if (this.socket !== null) {
      this.socket.onopen = this.socket.onmessage = this.socket.onclose = null;
      this.socket.close();
      this.socket = null;
    }
    const waiting = [...this.waiting.values()];
    this.waiting.clear();
    for (const { settle } of waiting) settle({ kind: "lost" });
  }

  private send(topic: string, members: object): Promise<Reply> {
    const id = ++this.lastId;
    const now = this.platform.clock();
    // A page that slept has asked for no sign of life: the silence until now proves nothing.
    if (this.waiting.size === 0 && now - this.heardAt > 2 * kQuietMs) this.heardAt = now;
    return new Promise((settle) => {
      this.waiting.set(id, { topic, settle });
      this.socket?.send(JSON.stringify({ id, topic, ...members }));
    });
  }

  private async login(): Promise<void> {
    const resume = this.epoch === undefined ? undefined : { epoch: this.epoch, seq: this.seq };
    const reply = await this.send("login", { ...readAccess(this.token), device: this.platform.device, resume });
    if (reply.kind === "failed") {
      this.refusal = reply.message;
      this.absence = presenceOf(reply);
    }
    if (reply.kind === "garbled") return this.onGone(0, "");
    if (reply.kind !== "done") return;
    this.attempts = 0;
    this.absence = null;
    this.setState("online");
    this.events.onLogin(reply.data as Login);
  }

  // Before the answer is delivered: the missed pushes follow it at once, and count from the last one seen.
  private noteEpoch(login: Login): void {
    if (!login.resumed) this.seq = login.seq;
    this.epoch = login.epoch;
  }

  private onMessage(text: string): void {
    this.heardAt = this.platform.clock();
    const frame = readFrame(text, (id) => this.waiting.get(id)?.topic);
    if (frame.kind === "push") return this.onPush(frame);
    if (frame.kind === "quotes") return this.events.onPrices(frame.rows);
    if (frame.kind === "alerts") return this.events.onAlerts(frame.rows);
    const waiting = this.waiting.get(frame.id);
    if (waiting === undefined) return frame.kind === "garbled" ? this.events.onGap() : undefined;
    this.waiting.delete(frame.id);
    if (frame.kind === "failure") {
      const { message, seen } = frame;
      return waiting.settle({ kind: isUnclear(message) ? "unclear" : "failed", message, seen });
    }
    if (frame.kind === "garbled") return waiting.settle({ kind: "garbled", text: frame.text });
    if (waiting.topic === "login") this.noteEpoch(frame.data as Login);
    waiting.settle({ kind: "done", data: frame.data });
  }

  private onPush(push: { seq: number; wrong: string } & Push): void {
    if (push.seq <= this.seq) return;
    if (push.seq !== this.seq + 1 || push.wrong !== "") this.events.onGap();
    this.seq = push.seq;
    if (push.wrong === "") this.events.onPush(push);
  }

  private onGone(code: number, reason: string): void {
    this.drop();
    const refused = code === kNotEntitled || (code === kNoLogin && this.refusal !== "");
    if (refused) {
      this.setState("off");
      return this.events.onRefused(this.refusal || reason);
    }
    if (code === kReplaced) return this.setState("replaced");
    if (code === kTooMany || code === kNoTerminal) this.attempts = Math.max(this.attempts, kLateAttempt);
    const wait = backoff(this.attempts++, this.platform.random());
    this.retryAt = this.platform.clock() + wait;
    this.timer = this.platform.later(() => this.open(), wait);
    this.setState("waiting");
  }
}
