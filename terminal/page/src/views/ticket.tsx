import { Component, h } from "preact";
import { money, whole } from "../format";
import { store } from "../store";
import { named, t } from "../texts";
import { isBuying, isCount, isGoodPrice, isOddLot, moved, offsetsOf, orderOf, priceOf, sidesOf, Ticket } from "../ticket";
import { Account, kLimit, kMarket, Quote } from "../wire";
import { Deal } from "./orders";
import { Choices, Confirm, Note, priceText, Sheet, Stepper } from "./parts";
import { AccountField, InstrumentField } from "./pickers";

interface State {
  ticket: Ticket;
  isConfirming: boolean;
  isSending: boolean;
  failure: string;
}

function mayOrder(account: Account): boolean {
  return account.accountStatus !== 0 && account.ordinaryOrderPrivilege;
}

function firstAccount(): Account | undefined {
  const accounts = store.lists.accounts.rows.filter(mayOrder);
  return accounts.find((account) => account.index === store.account) ?? accounts[0];
}

function emptyTicket(account: Account | undefined): Ticket {
  const combOffset = offsetsOf(account)[0] ?? 0;
  return { index: account?.index ?? 0, hashCode: 0, side: 1, combOffset, priceType: kLimit, price: "", volume: "" };
}

function faultOf(ticket: Ticket, quote: Quote | undefined): string {
  if (quote === undefined) return t("pick");
  if (ticket.priceType === kLimit && !isGoodPrice(ticket.price, quote)) {
    const text = (price: number) => priceText(price, quote.hashCode);
    return t("badPrice", String(quote.priceTick), text(quote.lowerLimit), text(quote.upperLimit));
  }
  if (!isCount(ticket.volume, 1, quote.maxVolume)) return t("badVolume", quote.maxVolume);
  return isOddLot(ticket, quote) ? t("badLot", quote.volumeStep) : "";
}

// An order in two steps: what is wanted, and a look at it before it goes out.
export class OrderTicket extends Component<{}, State> {
  state: State = { ticket: emptyTicket(firstAccount()), isConfirming: false, isSending: false, failure: "" };

  private readonly close = () => store.trade(false);

  // It may have been opened before the accounts were known.
  componentDidUpdate() {
    const account = this.state.ticket.index === 0 ? firstAccount() : undefined;
    if (account !== undefined) this.setState({ ticket: emptyTicket(account) });
  }

  private change(change: Partial<Ticket>) {
    this.setState({ ticket: { ...this.state.ticket, ...change }, failure: "" });
  }

  private quote(): Quote | undefined {
    return store.quote(this.state.ticket.hashCode);
  }

  private pickInstrument(quote: Quote | undefined) {
    if (quote === undefined) return;
    const decimals = priceText(quote.lastPrice, quote.hashCode).replace(/,/g, "");
    this.change({ hashCode: quote.hashCode, price: decimals, volume: String(quote.volumeStep) });
  }

  private setPrice(price: number) {
    this.change({ priceType: kLimit, price: priceText(price, this.state.ticket.hashCode).replace(/,/g, "") });
  }

  private review(event: Event) {
    event.preventDefault();
    const failure = faultOf(this.state.ticket, this.quote());
    this.setState({ failure, isConfirming: failure === "" });
  }

  private title(quote: Quote): string {
    const { ticket } = this.state;
    const deal = `${named("side", ticket.side)} ${named("offset", ticket.combOffset)}`.trim();
    return `${quote.codeName} ${deal} ${ticket.volume}`;
  }

  private async send(quote: Quote) {
    this.setState({ isSending: true, failure: "" });
    const order = orderOf(this.state.ticket, quote, Date.now());
    const title = this.title(quote);
    const failure = await store.placeOrder(order, title);
    if (!this.base) return failure === "" ? undefined : store.tell(`${title}: ${failure}`, true); // closed meanwhile
    if (failure === "") return this.close();
    this.setState({ isSending: false, isConfirming: false, failure });
  }

  private quoteLine(quote: Quote) {
    const price = (name: "bid" | "ask" | "last", value: number) => (
      <button type="button" class="quote" onClick={() => this.setPrice(value)}>
        <small>{t(name)}</small>
        <b class="num">{priceText(value, quote.hashCode)}</b>
      </button>
    );
    return (
      <div class={store.isStale("quotes") ? "quotes stale" : "quotes"}>
        {price("bid", quote.bidPrice)}
        {price("last", quote.lastPrice)}
        {price("ask", quote.askPrice)}
        <small class="limits num">
          {t("limits")} {priceText(quote.lowerLimit, quote.hashCode)} – {priceText(quote.upperLimit, quote.hashCode)}
        </small>
      </div>
    );
  }

  private terms(ticket: Ticket, account: Account | undefined) {
    const [sides, offsets] = [sidesOf(account), offsetsOf(account)];
    return [
      <div class={sides.length === 2 ? "terms" : ""}>
        <Choices
          name="side"
          label={t("side")}
          value={ticket.side}
          values={sides}
          text={(side) => named("side", side)}
          toneOf={(side) => (isBuying(side) ? "buy" : "sell")}
          onPick={(side) => this.change({ side })}
        />
        <Choices
          name="priceType"
          label={t("priceType")}
          value={ticket.priceType}
          values={[kLimit, kMarket]}
          text={(type) => t(type === kLimit ? "limit" : "market")}
          onPick={(priceType) => this.change({ priceType })}
        />
      </div>,
      offsets.length === 0 ? null : (
        <Choices
          name="offset"
          label={t("offset")}
          value={ticket.combOffset}
          values={offsets}
          text={(offset) => named("offset", offset)}
          onPick={(combOffset) => this.change({ combOffset })}
        />
      ),
    ];
  }

  private numbers(ticket: Ticket, quote: Quote) {
    const { priceTick, lowerLimit, upperLimit, volumeStep, maxVolume } = quote;
    const isMarket = ticket.priceType === kMarket;
    const stepPrice = (steps: number) => moved(ticket.price, steps, priceTick, lowerLimit, upperLimit);
    const stepVolume = (steps: number) => moved(ticket.volume, steps, volumeStep, volumeStep, maxVolume);
    return [
      <Stepper
        label={t("price")}
        mode="decimal"
        isDisabled={isMarket}
        value={isMarket ? t("marketPrice") : ticket.price}
        onChange={(price) => this.change({ price })}
        onStep={(steps) => this.change({ price: stepPrice(steps) })}
      />,
      <Stepper
        label={t("volume")}
        mode="numeric"
        value={ticket.volume}
        onChange={(volume) => this.change({ volume })}
        onStep={(steps) => this.change({ volume: stepVolume(steps) })}
      />,
    ];
  }

  private form(ticket: Ticket, account: Account | undefined, quote: Quote | undefined) {
    return (
      <form onSubmit={(event: Event) => this.review(event)}>
        <AccountField
          value={ticket.index}
          onPick={(index) => this.setState({ ticket: emptyTicket(store.accountOf(index)), failure: "" })}
        />
        <InstrumentField account={account} picked={quote} onPick={(picked) => this.pickInstrument(picked)} />
        {quote === undefined ? null : this.quoteLine(quote)}
        {this.terms(ticket, account)}
        {quote === undefined ? null : this.numbers(ticket, quote)}
        <div class="actions">
          <Note text={this.state.failure} />
          <button class="primary wide">{t("review")}</button>
        </div>
      </form>
    );
  }

  private confirmation(ticket: Ticket, account: Account, quote: Quote) {
    const { isSending, failure } = this.state;
    const price = priceOf(ticket, quote);
    const isMarket = ticket.priceType === kMarket;
    const text = priceText(price, quote.hashCode);
    const lines: [string, JSX.Element | string][] = [
      [t("account"), `${account.userCode} · ${named("market", account.marketType)}`],
      [t("instrument"), `${quote.codeName} ${quote.codeExch}`],
      [t("side"), <Deal side={ticket.side} offset={ticket.combOffset} hashCode={ticket.hashCode} />],
      [t("price"), isMarket ? `${t("market")} ≈ ${text}` : text],
      [t("volume"), whole(Number(ticket.volume))],
      [t("value"), money(price * Number(ticket.volume) * quote.multiplier)],
    ];
    return (
      <div>
        <dl class="confirm">
          {lines.map(([name, value]) => (
            <div key={name}>
              <dt>{name}</dt>
              <dd class="num">{value}</dd>
            </div>
          ))}
        </dl>
        <div class="actions">
          <Note text={store.link === "online" || isSending ? failure : t("unsent")} />
          <button disabled={isSending} onClick={() => this.setState({ isConfirming: false })}>
            {t("edit")}
          </button>
          <Confirm
            tone={isBuying(ticket.side) ? "buy" : "sell"}
            text={isSending ? t("sending") : t("confirmSide", named("side", ticket.side))}
            disabled={isSending || store.link !== "online"}
            onConfirm={() => void this.send(quote)}
          />
        </div>
      </div>
    );
  }

  render() {
    const { ticket, isConfirming } = this.state;
    const account = store.accountOf(ticket.index);
    const quote = this.quote();
    const isReady = isConfirming && account !== undefined && quote !== undefined;
    return (
      <Sheet title={t(isReady ? "confirmOrder" : "trade")} onClose={this.close}>
        {account === undefined ? <p class="empty">{t(store.lists.accounts.at === 0 ? "loading" : "noAccount")}</p> : null}
        {isReady ? this.confirmation(ticket, account, quote) : this.form(ticket, account, quote)}
      </Sheet>
    );
  }
}
