import "./ticket.css";
import { Component, h } from "preact";
import { nav, store } from "../app";
import { decimalsOf, fixed, money, whole } from "../format";
import { closingText, dealText, priceText } from "../describe";
import { clearDraft } from "../state/actions";
import { named, t } from "../texts/texts";
import { shareOf } from "../ticket/cost";
import { likelyTicket, quotedPrice, withAction } from "../ticket/fill";
import { Model, modelOf } from "../ticket/model";
import { moved } from "../ticket/numbers";
import { totalsOf } from "../ticket/steps";
import * as ticketing from "../ticket/ticket";
import { Action, Fault, Ticket } from "../ticket/ticket";
import { Account, Offset, PriceType, Quote } from "../wire/values";
import { Confirmation } from "./confirmation";
import { Choices, Pick, Stepper } from "./controls";
import { Note } from "./parts";
import { InstrumentField } from "./pickers";
import { Sheet } from "./sheet";

const kShares = [
  ["quarter", 0.25],
  ["half", 0.5],
  ["all", 1],
] as const;

// The ticket that is filled in; without one, an empty one of the account in sight.
export function currentTicket(): Ticket {
  const draft = store.drafts.current;
  if (draft !== undefined) return draft;
  const able = store.lists.accounts.rows.filter(ticketing.mayOrder);
  const wanted = store.account || store.drafts.index;
  return emptyTicket(able.find((account) => account.index === wanted) ?? able[0]);
}

const likelyIn = (account: Account, quote: Quote): Ticket =>
  likelyTicket(account, quote, ticketing.holdingOf(store.asker.positionOf({ index: account.index, hashCode: quote.hashCode })));

function emptyTicket(account: Account | undefined): Ticket {
  return { ...ticketing.kNoTicket, index: account?.index ?? 0 };
}

function faultText(fault: Fault, quote: Quote | undefined, closable: number): string {
  if (fault === "instrument" || quote === undefined) return t("badInstrument");
  const { lowerLimit, upperLimit, maxVolume, volumeStep } = quote;
  if (fault === "price") {
    return t("badPrice", tickText(quote), priceText(lowerLimit, quote), priceText(upperLimit, quote));
  }
  if (fault === "closable") return t("badClosable", whole(closable));
  return fault === "volume" ? t("badVolume", whole(maxVolume)) : t("badLot", whole(volumeStep));
}

const tickText = (quote: Quote): string => fixed(quote.priceTick, decimalsOf(quote.priceTick));

function actionText(action: Action, model: Model): string {
  if (action.offset === Offset.Close) {
    const { held } = model;
    return closingText(action.closes === "long" ? "long" : "short", held);
  }
  return dealText(action.side, action.offset, model.quote);
}

// An order in two steps: what is wanted, and a confirmation of what will be sent.
export class OrderTicket extends Component<{}, { isChecked: boolean }> {
  state = { isChecked: false };

  private change(ticket: Ticket, change: Partial<Ticket>) {
    store.draft({ ...ticket, ...change });
  }

  // A ticket that was filled in for the other account comes back; otherwise the instrument goes along.
  private pickAccount(ticket: Ticket, index: number) {
    const account = store.accountOf(index);
    const kept = store.drafts.of(index);
    const quote = store.quote(ticket.hashCode);
    if (account === undefined) return;
    if (kept !== undefined && kept.hashCode !== 0) return store.draft(kept);
    if (quote === undefined || !ticketing.classesOf(account).includes(quote.codeClass)) {
      return store.draft(emptyTicket(account));
    }
    const { price, priceType, volume } = ticket;
    store.draft({ ...likelyIn(account, quote), price, priceType, volume });
  }

  private review(event: Event, ticket: Ticket, model: Model) {
    event.preventDefault();
    const faults = this.faults(ticket, model);
    this.setState({ isChecked: true });
    if (faults.size === 0 && this.refusal(ticket, model) === "") return nav.open("review");
    const [first] = faults;
    const field = first === undefined ? null : document.getElementById(first === "lot" || first === "closable" ? "volume" : first);
    field?.focus();
  }

  private faults(ticket: Ticket, model: Model): Set<Fault> {
    return ticketing.faultsOf(ticket, model.quote, model.action, model.closable);
  }

  private refusal(ticket: Ticket, model: Model): string {
    const { account } = model;
    if (account !== undefined && !ticketing.mayOrder(account)) return t("accountClosed");
    return ticket.amends !== "" && model.amended === undefined && store.lists.orders.at > 0 ? t("orderGone") : "";
  }

  private quotes(ticket: Ticket, quote: Quote) {
    const price = (name: "bid" | "ask" | "last", value: number) => (
      <button
        type="button"
        class="quote"
        onClick={() =>
          this.change(ticket, { priceType: PriceType.Limit, price: value.toFixed(decimalsOf(quote.priceTick)) })
        }
      >
        <small>{t(name)}</small>
        <b class="num">{priceText(value, quote)}</b>
      </button>
    );
    return (
      <div class={store.isStale("quotes") ? "quotes stale" : "quotes"}>
        {price("bid", quote.bidPrice)}
        {price("last", quote.lastPrice)}
        {price("ask", quote.askPrice)}
      </div>
    );
  }

  private actions(ticket: Ticket, model: Model) {
    const { actions, action, account, quote, held } = model;
    if (account === undefined || quote === undefined || ticket.amends !== "") return null;
    const pick = (place: number) => {
      const picked = actions[place];
      const free = ticketing.closableOf(picked, picked.offset, held);
      store.draft(withAction(ticket, account, quote, picked, free));
    };
    return (
      <Choices
        name="action"
        label={t("action")}
        value={actions.findIndex((each) => each.side === action.side && each.offset === action.offset)}
        values={actions.map((_, place) => place)}
        text={(place) => actionText(actions[place], model)}
        toneOf={(place) => (ticketing.isBuying(actions[place].side) ? "buy" : "sell")}
        onPick={pick}
      />
    );
  }

  // Which part of a holding is closed: today's or yesterday's.
  private part(ticket: Ticket) {
    if (!ticketing.isClosing(ticket.combOffset) || ticket.amends !== "") return null;
    return (
      <details class="part" open={ticket.combOffset !== Offset.Close}>
        <summary>{t("morePart")}</summary>
        <Choices
          name="part"
          label={t("morePart")}
          value={ticket.combOffset}
          values={[Offset.Close, Offset.CloseToday, Offset.CloseYesterday]}
          text={(part) => named("part", part)}
          onPick={(combOffset) => this.change(ticket, { combOffset })}
        />
      </details>
    );
  }

  private numbers(ticket: Ticket, model: Model, quote: Quote) {
    const { priceTick, lowerLimit, upperLimit, volumeStep, maxVolume } = quote;
    const isMarket = ticket.priceType === PriceType.Market;
    const faults = this.state.isChecked ? this.faults(ticket, model) : new Set<Fault>();
    const failure = (...names: Fault[]) => names.filter((name) => faults.has(name)).map((name) => faultText(name, quote, model.closable));
    const stepPrice = (steps: number) => moved(ticket.price, steps, priceTick, lowerLimit, upperLimit);
    const stepVolume = (steps: number) => moved(ticket.volume, steps, volumeStep, volumeStep, maxVolume);
    const setType = (type: string) =>
      this.change(ticket, {
        priceType: Number(type),
        price: ticket.price === "" ? quotedPrice(ticket.side, quote) : ticket.price,
      });
    return [
      <Stepper
        id="price"
        label={t("price")}
        caption={
          ticket.amends !== "" ? undefined : (
            <Pick
              label={t("priceType")}
              value={ticket.priceType}
              options={[
                [PriceType.Limit, t("limit")],
                [PriceType.Market, t("market")],
              ]}
              onPick={setType}
            />
          )
        }
        mode="decimal"
        isDisabled={isMarket}
        value={isMarket ? t("marketPrice") : ticket.price}
        failure={failure("price").join("")}
        onChange={(price) => this.change(ticket, { price })}
        onStep={(steps) => this.change(ticket, { price: stepPrice(steps) })}
      />,
      <Stepper
        id="volume"
        label={t("volume")}
        mode="numeric"
        value={ticket.volume}
        failure={failure("volume", "closable", "lot").join("")}
        onChange={(volume) => this.change(ticket, { volume })}
        onStep={(steps) => this.change(ticket, { volume: stepVolume(steps) })}
      >
        <span class="shares">
          {kShares.map(([name, share]) => (
            <button
              key={name}
              type="button"
              aria-label={t("shareOf", t(name))}
              disabled={shareOf(model.largest, share, volumeStep) === 0}
              onClick={() => this.change(ticket, { volume: String(shareOf(model.largest, share, volumeStep)) })}
            >
              {t(name)}
            </button>
          ))}
        </span>
      </Stepper>,
    ];
  }

  private facts(model: Model, quote: Quote) {
    const { held, purse, steps, action, largest } = model;
    const totals = totalsOf(steps);
    const rows: [string, string][] = [
      [t("available"), money(purse.available)],
      [t(action.closes === "" ? "largestOpen" : "largestClose"), whole(largest)],
      [t("heldNow"), t("longShort", whole(held.long), whole(held.short))],
      [t("closable"), t("longShort", whole(held.longFree), whole(held.shortFree))],
      [t("fundsNeeded"), money(totals?.funds)],
      [t("commission"), money(totals?.commission)],
      [t("limits"), `${priceText(quote.lowerLimit, quote)} – ${priceText(quote.upperLimit, quote)}`],
      [t("tick"), tickText(quote)],
    ];
    return (
      <dl class={model.isStale ? "facts stale" : "facts"}>
        {rows.map(([name, value]) => (
          <div key={name}>
            <dt>{name}</dt>
            <dd class="figures">{value}</dd>
          </div>
        ))}
      </dl>
    );
  }

  private form(ticket: Ticket, model: Model) {
    const { account, quote } = model;
    const isLoaded = store.lists.positions.at > 0 && store.lists.quotes.at > 0;
    const isMissing = this.state.isChecked && quote === undefined;
    return (
      <form class="ticket" onSubmit={(event: Event) => this.review(event, ticket, model)}>
        <InstrumentField
          account={isLoaded ? account : undefined}
          picked={quote}
          isFixed={ticket.amends !== ""}
          hasFocus
          failure={isMissing ? t("badInstrument") : ""}
          onPick={(picked) => account !== undefined && store.draft(likelyIn(account, picked))}
        />
        {quote === undefined ? null : this.quotes(ticket, quote)}
        {this.actions(ticket, model)}
        {quote === undefined ? null : this.numbers(ticket, model, quote)}
        {this.part(ticket)}
        {quote === undefined ? null : this.facts(model, quote)}
        <div class="actions">
          <Note text={this.refusal(ticket, model)} />
          {quote === undefined ? null : (
            <button type="button" onClick={() => clearDraft(store, ticket.index)}>
              {t("clearTicket")}
            </button>
          )}
          <button class="primary">{t("review")}</button>
        </div>
      </form>
    );
  }

  render() {
    const ticket = currentTicket();
    const model = modelOf(store, ticket);
    const isReview = store.place.sheet === "review" && model.account !== undefined && model.quote !== undefined;
    const accounts = store.lists.accounts;
    const options = accounts.rows.map((account) => {
      return [account.index, account.userCode + (account.accountStatus === 0 ? ` · ${t("offline")}` : "")] as const;
    });
    const pick = (
      <Pick
        label={t("account")}
        value={ticket.index}
        options={options}
        onPick={(index) => this.pickAccount(ticket, Number(index))}
      />
    );
    const title = ticket.amends !== "" ? "amendTitle" : ticket.reverses ? "reverseTitle" : "trade";
    if (isReview) {
      return (
        <Sheet title={t(title === "trade" ? "confirmOrder" : title)}>
          <Confirmation ticket={ticket} model={model} />
        </Sheet>
      );
    }
    return (
      <Sheet title={t(title)} aside={ticket.amends !== "" ? null : pick}>
        {ticket.index === 0 ? <p class="empty">{t(accounts.at === 0 ? "loading" : "noAccount")}</p> : null}
        {this.form(ticket, model)}
      </Sheet>
    );
  }
}
