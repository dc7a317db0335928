import { Connection } from "../connection";
import { firedText } from "../describe";
import { Platform } from "../platform";
import { addressOf } from "../route";
import { Alert, Bodies } from "../wire/values";
import { Asker } from "./asker";
import { Notices } from "./notices";
import { whyNot } from "./why";

// The price alerts of the token. One that has fired gets a notice, and is deleted at the terminal once the user has seen
// it: a page that is closed before that shows it at its next opening.
export class Alerts {
  private rows: readonly Alert[] = [];
  private noticed = new Map<number, boolean>(); // by id: whether the notice has been seen

  constructor(
    private readonly platform: Platform,
    private readonly connection: Connection,
    private readonly asker: Asker,
    private readonly notices: Notices,
    private readonly changed: () => void,
  ) {}

  // Those that have not fired.
  get waiting(): readonly Alert[] {
    return this.rows.filter((row) => row.fired === 0);
  }

  // To be called after each login. Another host may lack the topic.
  async ask(): Promise<void> {
    const reply = await this.connection.request("alert.list", undefined);
    if (reply.kind !== "done") return;
    this.take(reply.data);
    const seen = reply.data.filter((row) => this.noticed.get(row.id)); // whose deletion failed
    if (seen.length > 0) void this.request("alert.clear", seen.map((row) => row.id));
  }

  // Returns why not; empty if it was done.
  async request<Topic extends "alert.set" | "alert.clear">(topic: Topic, body: Bodies[Topic]): Promise<string> {
    const reply = await this.connection.request(topic, body);
    if (reply.kind === "done") this.take(reply.data);
    return whyNot(reply);
  }

  takePush(pushed: readonly Alert[]): void {
    const ids = new Set(pushed.map((row) => row.id));
    this.take([...this.rows.filter((row) => !ids.has(row.id)), ...pushed]);
  }

  clear(): void {
    this.rows = [];
    this.noticed.clear();
  }

  // To be called when the names of the instruments have come, too.
  notice(): void {
    if (this.asker.lists.quotes.at === 0) return;
    for (const row of this.rows) {
      if (row.fired === 0 || this.noticed.has(row.id)) continue;
      this.noticed.set(row.id, false);
      const text = firedText(row, this.asker.quote(row.hashCode), this.platform.now());
      this.notices.tellAlert(text, addressOf("quotes", `alerts=${row.hashCode}`), () => this.onSeen(row.id));
    }
  }

  private take(rows: readonly Alert[]): void {
    this.rows = rows;
    this.notice();
    this.changed();
  }

  private onSeen(id: number): void {
    this.noticed.set(id, true);
    void this.request("alert.clear", [id]);
  }
}
