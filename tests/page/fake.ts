import { Platform, Socket } from "../../terminal/page/src/platform";
import { Store, Views } from "../../terminal/page/src/state/store";
import * as wire from "../../terminal/page/src/wire/values";

// A browser and a terminal, for tests without either: time does not pass until a test moves it, and the terminal
// answers with what a test has set.

type Frame = { id: number; topic: string; data?: unknown; key?: string; [member: string]: unknown };

export class FakePlatform implements Platform {
  at = 10_000_000;
  day = Date.UTC(2026, 0, 2, 4); // noon in China
  seen = true;
  sockets: FakeSocket[] = [];
  stored = new Map<string, string>();
  device = "device";
  terminal = "";
  reloads = 0;
  reload = () => void ++this.reloads;
  vibrations = 0;
  private texts = 0;
  private timers: { id: number; at: number; action: () => void }[] = [];
  private lastTimer = 0;

  clock = () => this.at;
  now = () => this.day + this.at;
  random = () => 0;
  randomText = () => `key${++this.texts}`;
  isSeen = () => this.seen;
  recall = (name: string) => this.stored.get(name) ?? "";
  remember = (name: string, value: string) => void (value === "" ? this.stored.delete(name) : this.stored.set(name, value));
  vibrate = () => void ++this.vibrations;
  later = (action: () => void, milliseconds: number) => {
    this.timers.push({ id: ++this.lastTimer, at: this.at + milliseconds, action });
    return this.lastTimer;
  };
  cancel = (timer: number) => {
    this.timers = this.timers.filter((each) => each.id !== timer);
  };
  openSocket = () => {
    const socket = new FakeSocket();
    this.sockets.push(socket);
    return socket;
  };

  get socket(): FakeSocket {
    return this.sockets[this.sockets.length - 1];
  }

  pass(milliseconds: number): void {
    const end = this.at + milliseconds;
    for (;;) {
      const [next] = this.timers.filter((each) => each.at <= end).sort((a, b) => a.at - b.at);
      if (next === undefined) break;
      this.at = Math.max(this.at, next.at);
      this.cancel(next.id);
      next.action();
    }
    this.at = end;
  }
}

export class FakeSocket implements Socket {
  onopen: Socket["onopen"] = null;
  onmessage: Socket["onmessage"] = null;
  onclose: Socket["onclose"] = null;
  sent: Frame[] = [];
  isClosed = false;

  send(text: string): void {
    this.sent.push(JSON.parse(text) as Frame);
  }

  close(): void {
    this.isClosed = true;
  }

  say(frame: object | string): void {
    this.onmessage?.({ data: typeof frame === "string" ? frame : JSON.stringify(frame) });
  }

  // Frames of a topic, the last one last.
  of(topic: string): Frame[] {
    return this.sent.filter((frame) => frame.topic === topic);
  }
}

export const settled = (): Promise<void> => new Promise((done) => setImmediate(done));

const zeroes = (names: string): object => Object.fromEntries(names.split(" ").map((name) => [name, 0]));

export function account(change: Partial<wire.Account> = {}): wire.Account {
  return {
    userCode: "A1",
    index: 1,
    marketType: wire.Market.Futures,
    triggerOrderPrivilege: true,
    ordinaryOrderPrivilege: true,
    accountStatus: 1,
    ...change,
  };
}

export function quote(change: Partial<wire.Quote> = {}): wire.Quote {
  return {
    hashCode: 7,
    codeExch: "rb2701.SHFE",
    codeName: "rebar",
    codeClass: wire.CodeClass.Future,
    lastPrice: 3325,
    bidPrice: 3324,
    askPrice: 3326,
    preClosePrice: 3312,
    preSettlementPrice: 3308,
    lowerLimit: 3077,
    upperLimit: 3539,
    priceTick: 1,
    volumeStep: 1,
    maxVolume: 500,
    multiplier: 10,
    ...change,
  };
}

export function price(lastPrice: number, hashCode = 7): wire.Price {
  return { hashCode, lastPrice, bidPrice: lastPrice - 1, askPrice: lastPrice + 1 };
}

export function alert(change: Partial<wire.Alert> = {}): wire.Alert {
  return { id: 1, hashCode: 7, above: true, price: 3330, made: 1, fired: 0, firedPrice: 0, ...change };
}

// What an order and its fill have in common.
const kDeal = {
  userCode: "A1",
  index: 1,
  accountType: 0,
  codeExch: "rb2701.SHFE",
  hashCode: 7,
  codeName: "rebar",
  side: 1,
  combOffset: 1,
  hedge: 1,
  volume: 2,
  localOrderId: "1001",
  accountStatus: 1,
};

export function order(change: Partial<wire.Order> = {}): wire.Order {
  return {
    ...kDeal,
    price: 3300,
    srcTimestamp: 1,
    priceType: 1,
    orderId: "x",
    status: wire.Status.Working,
    note: "",
    source: "web key1",
    fillVolume: 0,
    fillAvgPrice: 0,
    fillAmount: 0,
    ...change,
  };
}

export function fill(change: Partial<wire.Fill> = {}): wire.Fill {
  return {
    ...kDeal,
    price: 3326,
    exchTimestamp: 10,
    fillId: "f1",
    source: "",
    ...change,
  };
}

export function capital(change: Partial<wire.Capital> = {}): wire.Capital {
  return {
    ...zeroes(
      "accountType lastAmount profitRatio netLever preCloseProfit totalLever risk available todayFloatingProfit " +
        "amassFloatingProfit closeProfit maintainAmount dynamicAmount preBalance withdrawQuota currMargin " +
        "frozenMargin deposit withdraw commission",
    ),
    userCode: "A1",
    index: 1,
    accountStatus: 1,
    ...change,
  } as wire.Capital;
}

export function position(change: Partial<wire.Position> = {}): wire.Position {
  return {
    ...zeroes(
      "accountType netLever totalLever longLever shortLever netMarketValue totalMarketValue totalPosition longPosition " +
        "longAvailableQuantity shortPosition shortAvailableQuantity todayProfitRatio todayProfitCateRatio " +
        "todayProfitAccRatio amassProfitCateRatio amassProfitAccRatio historyCapitalFinalCost currentPrice " +
        "preSettlementPrice preClosePrice longYesterdayVolume longCloseYesterdayVolume shortYesterdayVolume " +
        "shortCloseYesterdayVolume margin todayPorfit floatPorfit avgPrice currentVolume yesterdayVolume longAvgPrice " +
        "longMarketValue longFloatPorfit longTodayVolume shortAvgPrice shortMarketValue shortFloatPorfit " +
        "shortTodayVolume marginRate",
    ),
    userCode: "A1",
    index: 1,
    codeExch: "rb2701.SHFE",
    hashCode: 7,
    aimType: "",
    codeType: "",
    codeName: "rebar",
    code: "rb2701",
    exchangeName: "",
    accountStatus: 1,
    ...change,
  } as wire.Position;
}

export function rates(change: Partial<wire.Rates> = {}): wire.Rates {
  return {
    ...zeroes("longByVolume shortByVolume commissionByMoney commissionMinimum saleTax"),
    longByMoney: 0.1,
    shortByMoney: 0.2,
    commissionByVolume: 3,
    ...change,
  } as wire.Rates;
}

export const kNoViews: Views = { changed: () => undefined, notify: () => undefined, moved: () => undefined };

export const kRights = ["see", "cancel", "trade"];

// A page that is logged in. Lists that it asks for are answered with `rows`, by topic, until a test says otherwise.
export class FakeTerminal {
  readonly platform = new FakePlatform();
  readonly store: Store;
  rows: { [topic: string]: unknown } = {
    "account.list": [account()],
    "alert.list": [],
    "quote.list": [quote()],
    "capital.list": [],
    "position.list": [],
    "trader.list": [],
    "terminal.info": { name: "t", quotes: "still", accounts: 1, instruments: 1, workingOrders: 0 },
  };
  isMute = false;
  private answered = new Set<Frame>();

  constructor(stored: { [name: string]: string } = {}, later = 0) {
    this.platform.at += later;
    for (const [name, value] of Object.entries(stored)) this.platform.remember(name, value);
    this.store = new Store(this.platform);
  }

  async logIn(login: object = {}): Promise<void> {
    this.store.logIn("secret");
    await this.open(login);
  }

  // Answers the login of the newest socket.
  async open(login: object = {}): Promise<void> {
    this.platform.socket.onopen?.();
    const frame = this.platform.socket.of("login")[0];
    this.answered.add(frame);
    const data = { name: "n", rights: kRights, epoch: "e", seq: 0, resumed: false, ...login };
    this.platform.socket.say({ id: frame.id, topic: "login", message: "", data });
    await this.answer();
  }

  // Answers the waiting requests whose topics have rows, and those that follow from the answers.
  async answer(): Promise<void> {
    for (let round = 0; round < 5; ++round) {
      await settled();
      if (this.isMute) return;
      for (const frame of [...this.platform.socket.sent]) {
        if (this.answered.has(frame) || !(frame.topic in this.rows)) continue;
        this.reply(frame, this.rows[frame.topic]);
      }
    }
  }

  reply(frame: Frame, data: unknown, message = ""): void {
    this.answered.add(frame);
    this.platform.socket.say({ id: frame.id, topic: frame.topic, message, data });
  }

  // Time passes, with a tick each half second.
  async pass(milliseconds: number): Promise<void> {
    for (let left = milliseconds; left > 0; left -= 500) {
      this.platform.pass(Math.min(500, left));
      this.store.tick();
      await this.answer();
    }
  }

  push(seq: number, topic: string, data: unknown, message = ""): void {
    this.platform.socket.say({ seq, topic, message, data });
  }

  pushAlerts(...data: wire.Alert[]): void {
    this.platform.socket.say({ topic: "alert.push", message: "", data });
  }

  pushPrices(...data: wire.Price[]): void {
    this.platform.socket.say({ topic: "quote.push", message: "", data });
  }

  last(topic: string): Frame {
    const frames = this.platform.socket.of(topic);
    return frames[frames.length - 1];
  }
}
