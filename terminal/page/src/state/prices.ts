import { Connection } from "../connection";
import { capitalAfter, positionAt } from "../followed";
import { Platform } from "../platform";
import { Capital, Position, Price, Quote } from "../wire/values";
import { Asker } from "./asker";

const kMostWatched = 200; // of one session
const kAgainMs = 60_000; // after a refusal: a host may lack the topic
const kLateMs = 5000;

interface Known {
  price: Price;
  until: number; // when it was last known to be right, by clock(); Infinity: it is watched
}

// The prices that the terminal pushes, and the rows of the lists that follow them.
export class Prices {
  private known = new Map<number, Known>(); // by hash code
  private codes = new Set<number>(); // of the last request
  private askedAt = 0;
  private isAsked = false;
  private againAt = Infinity;
  private gains = new Map<number, number>(); // of each account, by the prices that came since the page began
  private gainsOfList = new Map<number, number>(); // the same when "capital.list" came

  constructor(
    private readonly platform: Platform,
    private readonly connection: Connection,
    private readonly asker: Asker,
  ) {}

  // ---- what the views read

  quote(hashCode: number): Quote | undefined {
    const quote = this.asker.quote(hashCode);
    const price = this.since(this.asker.lists.quotes.at, hashCode);
    return quote === undefined || price === undefined ? quote : { ...quote, ...price };
  }

  // The row itself if nothing has moved since its list.
  position(row: Position): Position {
    const price = this.lastOf(row);
    const multiplier = this.asker.quote(row.hashCode)?.multiplier;
    return multiplier === undefined || price === row.currentPrice ? row : positionAt(row, price, multiplier);
  }

  // What a position has gained since its list, in money.
  gainOf(row: Position): number {
    return this.gainAt(row, this.lastOf(row), row.currentPrice);
  }

  // An account follows if all that it holds is watched.
  capital(row: Capital): Capital {
    const { rows, at } = this.asker.lists.positions;
    const gain = (this.gains.get(row.index) ?? 0) - (this.gainsOfList.get(row.index) ?? 0);
    const isUnknown = (held: Position) =>
      held.index === row.index && held.longPosition + held.shortPosition > 0 && this.since(at, held.hashCode) === undefined;
    return gain === 0 || rows.some(isUnknown) ? row : capitalAfter(row, gain);
  }

  // Whether the terminal pushes this price now.
  isWatched(hashCode: number): boolean {
    return this.known.get(hashCode)?.until === Infinity;
  }

  // Whether prices that have been asked for are worth waiting for.
  areComing(now: number): boolean {
    return this.isAsked && now - this.askedAt <= kLateMs;
  }

  // ---- what the page does

  // Watches these instruments in place of those before: the first of them, if they are too many.
  async watch(codes: readonly number[]): Promise<void> {
    const wanted = new Set([...new Set(codes)].slice(0, kMostWatched));
    const now = this.platform.clock();
    const isSame = wanted.size === this.codes.size && [...wanted].every((code) => this.codes.has(code));
    if (this.connection.state !== "online" || (isSame && now < this.againAt)) return;
    this.leave(wanted);
    this.askedAt = now;
    this.isAsked = true;
    this.againAt = Infinity;
    const reply = await this.connection.request("quote.watch", [...wanted]);
    if (this.codes !== wanted) return; // another request has followed
    this.isAsked = false;
    if (reply.kind === "done") this.take(reply.data);
    else this.againAt = now + kAgainMs;
  }

  // Rows of a push, or of the answer to the request.
  take(rows: readonly Price[]): void {
    const prices = new Map(rows.map((row) => [row.hashCode, row]));
    for (const held of this.asker.lists.positions.rows) {
      const price = prices.get(held.hashCode);
      if (price !== undefined) this.gain(held, price.lastPrice);
    }
    const now = this.platform.clock();
    for (const price of rows) {
      this.known.set(price.hashCode, { price, until: this.codes.has(price.hashCode) ? Infinity : now });
    }
  }

  // The connection has ended, and the watch with it.
  end(): void {
    this.leave(new Set());
    this.isAsked = false;
  }

  capitalCame(): void {
    this.gainsOfList = new Map(this.gains);
  }

  private lastOf(row: Position): number {
    return this.since(this.asker.lists.positions.at, row.hashCode)?.lastPrice ?? row.currentPrice;
  }

  private gainAt(row: Position, price: number, before: number): number {
    const multiplier = this.asker.quote(row.hashCode)?.multiplier ?? 0;
    return (price - before) * multiplier * (row.longPosition - row.shortPosition);
  }

  private leave(codes: Set<number>): void {
    const now = this.platform.clock();
    for (const [code, known] of this.known) {
      if (known.until === Infinity && !codes.has(code)) known.until = now;
    }
    this.codes = codes;
  }

  // The price, if it is newer than a list of this age. A watched one is newer than any list.
  private since(at: number, hashCode: number): Price | undefined {
    const known = this.known.get(hashCode);
    return known !== undefined && known.until > at ? known.price : undefined;
  }

  // A price that was not watched counts from the one in the list, unless another list is on its way: "capital.list" may
  // have come before it.
  private gain(held: Position, price: number): void {
    const { isAsked } = this.asker.lists.positions;
    const isOld = isAsked || this.asker.isStale("positions", this.platform.clock());
    if (!this.isWatched(held.hashCode) && isOld) return;
    const gain = this.gainAt(held, price, this.lastOf(held));
    this.gains.set(held.index, (this.gains.get(held.index) ?? 0) + gain);
  }
}
