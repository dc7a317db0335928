import { Component, h } from "preact";
import { nav, store } from "../app";
import { dealText, nameOf, orderText, priceText } from "../describe";
import { money, percent, whole } from "../format";
import { clearDraft } from "../state/actions";
import { StepOutcome } from "../state/desk";
import { named, t, TextName } from "../texts/texts";
import { Model } from "../ticket/model";
import { distance, Reason, reasonsOf } from "../ticket/review";
import { positionAfter, totalsOf } from "../ticket/steps";
import { isBuying, openingOf, orderOf, Ticket } from "../ticket/ticket";
import { PriceType, Quote } from "../wire/values";
import { Confirm } from "./controls";
import { Note } from "./parts";

interface Props {
  ticket: Ticket;
  model: Model;
}

interface State {
  agreed: Reason[];
  isSending: boolean;
  failure: string;
}

function distanceText(ticket: Ticket, model: Model, quote: Quote): string {
  const far = distance(ticket.side, model.price, quote);
  if (Number.isNaN(far)) return t("noQuote");
  if (Math.abs(far) < 1e-9) return t("atQuote");
  return t(far > 0 ? "worse" : "better", percent(Math.abs(far)));
}

// What will be sent, beside the market and the account, and the tap that sends it.
export class Confirmation extends Component<Props, State> {
  state: State = { agreed: [], isSending: false, failure: "" };
  private isGone = false;

  componentWillUnmount() {
    this.isGone = true;
  }

  private async send(quote: Quote) {
    const { ticket, model } = this.props;
    this.setState({ isSending: true, failure: "" });
    const order = orderOf(ticket, quote, store.platform.now());
    const name = nameFor(ticket, model, quote);
    if (ticket.reverses) {
      const opening = orderOf(openingOf(ticket), quote, store.platform.now());
      const names = [name, nameFor(openingOf(ticket), model, quote)] as const;
      return this.after(await store.desk.reverse(order, opening, names), "reversed", "reverseFailed", "reverseOpen");
    }
    if (model.amended !== undefined) {
      return this.after(await store.desk.amend(model.amended, order, name), "amended", "amendFailed", "amendOpen");
    }
    this.finish(await store.desk.place(order, name), name);
  }

  private after(outcome: StepOutcome, done: TextName, failed: TextName, open: TextName) {
    const { ticket, model } = this.props;
    const name = model.quote === undefined ? "" : nameFor(ticket, model, model.quote);
    if (outcome.kind === "failed") return this.finish(t(failed, outcome.failure), name);
    if (outcome.kind === "refused") {
      // The first order is gone: what is left in the ticket is a new order.
      store.draft(ticket.reverses ? openingOf(ticket) : { ...ticket, amends: "" });
      return this.finish(outcome.failure, name);
    }
    store.tell(outcome.kind === "done" ? t(done, name) : t(open), outcome.kind === "open");
    this.finish("", name);
  }

  // The ticket is kept if its order was refused, and so is another one that was begun meanwhile.
  private finish(failure: string, name: string) {
    if (failure === "") {
      const { ticket } = this.props;
      if (store.drafts.of(ticket.index) === ticket) clearDraft(store, ticket.index);
      if (!this.isGone) nav.closeAll();
    } else if (this.isGone) {
      store.tell(`${name}\n${failure}`, true);
    } else {
      this.setState({ isSending: false, failure });
    }
  }

  private lines(quote: Quote): [string, string][] {
    const { ticket, model } = this.props;
    const { held, steps, price, volume, account } = model;
    const isMarket = ticket.priceType === PriceType.Market;
    const totals = totalsOf(steps);
    const [long, short] = positionAfter(steps[steps.length - 1]);
    const lines: [string, string][] = [
      [t("account"), `${account?.userCode} · ${named("market", account?.marketType ?? 0)}`],
      [t("instrument"), `${quote.codeName} ${quote.codeExch}`],
      [t("price"), `${t(isMarket ? "market" : "limit")} ${isMarket ? "≈ " : ""}${priceText(price, quote)}`],
      [t("volume"), whole(volume)],
      [t("bidAsk"), `${priceText(quote.bidPrice, quote)} / ${priceText(quote.askPrice, quote)}`],
      [t("distance"), distanceText(ticket, model, quote)],
      [t("value"), money(price * volume * quote.multiplier)],
      [t("fundsNeeded"), money(totals?.funds)],
      [t("commission"), money(totals?.commission)],
      [t("remaining"), money(totals?.remaining)],
      [t("positionBefore"), t("longShort", whole(held.long), whole(held.short))],
      [t("positionAfter"), t("longShort", whole(long), whole(short))],
    ];
    if (ticket.reverses) {
      const { side, combOffset } = openingOf(ticket);
      lines.splice(4, 0, [t("secondOrder"), t("thenOpens", dealText(side, combOffset, quote), whole(volume))]);
    }
    if (store.terminal !== "") lines.unshift([t("terminal"), store.terminal]);
    return lines;
  }

  private isReady(): boolean {
    const { ticket, model } = this.props;
    if (ticket.amends !== "" && model.amended === undefined) return false;
    if (store.link !== "online" || store.prices.areComing(store.now)) return false;
    return store.asker.isInformed(ticket, store.now);
  }

  // A second tap, in another place, for what is easily a mistake.
  private reasons(reasons: Reason[], agreed: boolean) {
    const agree = (event: Event) =>
      this.setState({ agreed: (event.target as HTMLInputElement).checked ? reasons : [] });
    return (
      <div class="reasons" role="group" aria-label={t("reasonsTitle")}>
        <ul>
          {reasons.map((reason) => (
            <li key={reason}>{t(`reason${reason}`, store.prefs.share)}</li>
          ))}
        </ul>
        <label class="check">
          <input type="checkbox" checked={agreed} onChange={agree} />
          <span>{t("iKnow")}</span>
        </label>
      </div>
    );
  }

  render() {
    const { ticket, model } = this.props;
    const { isSending, failure } = this.state;
    const { quote } = model;
    if (quote === undefined) return null;
    const share = store.prefs.share / 100;
    const reasons = isSending ? [] : reasonsOf(model, quote, share);
    const agreed = reasons.every((reason) => this.state.agreed.includes(reason));
    const tone = isBuying(ticket.side) ? "buy" : "sell";
    const deal = dealText(ticket.side, ticket.combOffset, quote);
    return (
      <div>
        <p class={`deal headline ${tone}`}>
          {deal} <b class="num">{whole(model.volume)}</b>
        </p>
        {model.amended === undefined ? null : (
          <p class="hint">{t("amendsHint", orderText(model.amended, quote))}</p>
        )}
        <dl class={model.isStale ? "confirm stale" : "confirm"}>
          {this.lines(quote).map(([name, value]) => (
            <div key={name}>
              <dt>{name}</dt>
              <dd class="figures">{value}</dd>
            </div>
          ))}
        </dl>
        {reasons.length > 0 ? this.reasons(reasons, agreed) : null}
        <div class="actions">
          <Note text={store.link === "online" || isSending ? failure : t("unsent")} />
          <button disabled={isSending} onClick={() => nav.edit()}>
            {t("edit")}
          </button>
          <Confirm
            tone={tone}
            text={isSending ? t("sending") : t("confirmIt", deal)}
            disabled={isSending || !agreed || !this.isReady()}
            onConfirm={() => void this.send(quote)}
          />
        </div>
      </div>
    );
  }
}

// The order in words, as its notices and the list of awaited orders name it.
function nameFor(ticket: Ticket, model: Model, quote: Quote): string {
  const { account, price, volume } = model;
  const { hashCode, side, combOffset, priceType, index } = ticket;
  const row = { index, hashCode, codeExch: quote.codeExch, codeName: nameOf({ ...quote, index, userCode: "" }, quote) };
  const userCode = account?.userCode ?? "";
  return `${orderText({ ...row, userCode, side, combOffset, priceType, price, volume }, quote)} · ${userCode}`;
}
