import { backoff } from "./backoff";
import { clock } from "./clock";
import { Frame, Login } from "./wire";

// What became of a request. "lost": it may have been carried out or not. "unsent": it was not.
export type Reply =
  | { kind: "done"; data: unknown }
  | { kind: "failed"; message: string }
  | { kind: "garbled"; text: string }
  | { kind: "lost" }
  | { kind: "unsent" };

export type LinkState = "off" | "connecting" | "online" | "waiting" | "replaced";

export interface ConnectionEvents {
  onState(): void;
  onLogin(login: Login): void;
  onRefused(message: string): void; // the token is no good; no further attempt is made
  onPush(push: Frame): void;
  onGap(): void; // pushes are missing
}

const kSilenceMs = 10_000; // requests wait and nothing comes: the peer is gone, whatever the socket believes
const kConnectMs = 10_000;
const kNoLogin = 4401;
const kNotEntitled = 4403;
const kReplaced = 4409;
const kTooMany = 4429;
const kLateAttempt = 5;

function readReply(frame: Frame): Reply {
  if (frame.message !== "") return { kind: "failed", message: frame.message };
  return frame.text === undefined ? { kind: "done", data: frame.data } : { kind: "garbled", text: frame.text };
}

// The one WebSocket: logs in, comes back by itself, matches answers to requests.
export class Connection {
  state: LinkState = "off";
  retryAt = 0; // by clock(), while "waiting"
  private socket: WebSocket | null = null;
  private token = "";
  private refusal = "";
  private attempts = 0;
  private lastId = 0;
  private waiting = new Map<number, (reply: Reply) => void>();
  private heardAt = 0;
  private timer = 0;
  private epoch: string | undefined;
  private seq = 0;

  constructor(
    private readonly url: string,
    private readonly device: string,
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

  // At once rather than when the wait is over.
  retryNow(): void {
    if (this.state === "waiting" || this.state === "replaced") this.open();
  }

  // To be called when the device wakes up: what came meanwhile has yet to be handed on.
  wake(): void {
    this.heardAt = clock();
    if (this.state === "waiting") this.open();
  }

  request(topic: string, data: unknown, key?: string): Promise<Reply> {
    if (this.state !== "online") return Promise.resolve<Reply>({ kind: "unsent" });
    return this.send({ topic, data, key });
  }

  // To be called each second.
  check(now: number): void {
    const limit = this.state === "connecting" ? kConnectMs : kSilenceMs;
    if (this.waiting.size > 0 || this.state === "connecting") {
      if (now - this.heardAt > limit) this.onGone(0, "");
    }
  }

  private setState(state: LinkState): void {
    if (this.state === state) return;
    this.state = state;
    this.events.onState();
  }

  private open(): void {
    this.drop();
    this.refusal = "";
    this.heardAt = clock();
    const socket = new WebSocket(this.url);
    this.socket = socket;
    socket.onopen = () => this.login();
    socket.onmessage = (event) => this.onMessage(String(event.data));
    socket.onclose = (event) => this.onGone(event.code, event.reason);
    this.setState("connecting");
  }

  // Silently: nothing of the old socket is heard any more.
  private drop(): void {
    clearTimeout(this.timer);
    if (this.socket !== null) {
      this.socket.onopen = this.socket.onmessage = this.socket.onclose = null;
      this.socket.close();
      this.socket = null;
    }
    const waiting = [...this.waiting.values()];
    this.waiting.clear();
    for (const settle of waiting) settle({ kind: "lost" });
  }

  private send(frame: object): Promise<Reply> {
    const id = ++this.lastId;
    if (this.waiting.size === 0) this.heardAt = clock();
    return new Promise((settle) => {
      this.waiting.set(id, settle);
      this.socket?.send(JSON.stringify({ id, ...frame }));
    });
  }

  private async login(): Promise<void> {
    const resume = this.epoch === undefined ? undefined : { epoch: this.epoch, seq: this.seq };
    const reply = await this.send({ topic: "login", token: this.token, device: this.device, resume });
    if (reply.kind === "failed") this.refusal = reply.message;
    if (reply.kind !== "done") return;
    const login = (reply.data ?? {}) as Login;
    this.attempts = 0;
    this.setState("online");
    this.events.onLogin(login);
  }

  // Before the answer is handed on: the pushes that were missed follow it at once, and count from where we stood.
  private noteEpoch(login: Login): void {
    if (login.resumed !== true) this.seq = login.seq ?? 0;
    this.epoch = login.epoch;
  }

  private onMessage(text: string): void {
    this.heardAt = clock();
    const frame = JSON.parse(text) as Frame;
    const settle = typeof frame.id === "number" ? this.waiting.get(frame.id) : undefined;
    if (settle === undefined) return this.onPush(frame);
    this.waiting.delete(frame.id as number);
    if (frame.topic === "login" && frame.message === "") this.noteEpoch((frame.data ?? {}) as Login);
    settle(readReply(frame));
  }

  private onPush(push: Frame): void {
    if (push.seq !== undefined) {
      if (push.seq <= this.seq) return;
      if (push.seq !== this.seq + 1) this.events.onGap();
      this.seq = push.seq;
    }
    this.events.onPush(push);
  }

  private onGone(code: number, reason: string): void {
    this.drop();
    const refused = code === kNotEntitled || (code === kNoLogin && this.refusal !== "");
    if (refused) {
      this.setState("off");
      return this.events.onRefused(this.refusal || reason);
    }
    if (code === kReplaced) return this.setState("replaced");
    if (code === kTooMany) this.attempts = Math.max(this.attempts, kLateAttempt);
    const wait = backoff(this.attempts++, Math.random());
    this.retryAt = clock() + wait;
    this.timer = window.setTimeout(() => this.open(), wait);
    this.setState("waiting");
  }
}
