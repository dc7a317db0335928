import { Component, h } from "preact";
import { nav, store } from "../app";
import { priceText } from "../describe";
import { decimalsOf, percent, signed } from "../format";
import { isHeld } from "../state/wanted";
import { t } from "../texts/texts";
import { likelyTicket } from "../ticket/fill";
import { holdingOf, matches } from "../ticket/ticket";
import { Position, Quote } from "../wire/values";
import { accountFor, arranged, changeOf, changeShare } from "../watchlist";
import { Alerts, Bell } from "./alerts";
import { Column, List } from "./list";
import { Gain, Icon, withoutExchange } from "./parts";
import { Spark } from "./spark";

const kStar = "M12 3l2.8 5.8 6.2.9-4.5 4.4 1.1 6.2L12 17.3l-5.6 3 1.1-6.2L3 9.7l6.2-.9z";

const spark = ({ hashCode, lastPrice, preSettlementPrice }: Quote) => (
  <Spark hashCode={hashCode} last={lastPrice} base={preSettlementPrice} />
);
const price = (value: number, row: Quote) => <span class="num">{priceText(value, row)}</span>;
const change = (row: Quote) => (
  <Gain value={changeOf(row)} text={signed(changeOf(row), decimalsOf(row.priceTick))} />
);
const share = (row: Quote) => <Gain value={changeOf(row)} text={percent(changeShare(row), true)} />;
const last = (row: Quote) => <Gain value={changeOf(row)} text={priceText(row.lastPrice, row)} class="strong" />;
const limits = (row: Quote) => (
  <span class="figures">
    {priceText(row.lowerLimit, row)} – {priceText(row.upperLimit, row)}
  </span>
);

const heldTag = (isHere: boolean) => (isHere ? <span class="tag">{t("isHeld")}</span> : null);

function name(row: Quote, isHere: boolean) {
  return (
    <span class="code">
      <b>{row.codeName}</b> <small>{row.codeExch}</small> {heldTag(isHere)}
    </span>
  );
}

function columnsOf(held: ReadonlySet<number>): Column<Quote>[] {
  const number = true;
  return [
    { name: "instrument", value: (row) => row.codeName, cell: (row) => name(row, held.has(row.hashCode)), share: 2.4 },
    {
      name: "last",
      cell: (row) => (
        <span class="with-spark">
          {spark(row)}
          {last(row)}
        </span>
      ),
      isNumber: number,
      share: 1.6,
    },
    { name: "change", cell: change, isNumber: number },
    { name: "changeShare", value: changeShare, cell: share, isNumber: number },
    { name: "bid", cell: (row) => price(row.bidPrice, row), isNumber: number },
    { name: "ask", cell: (row) => price(row.askPrice, row), isNumber: number },
    { name: "limits", cell: limits, isNumber: number, share: 1.7 },
  ];
}

function card(row: Quote, isHere: boolean) {
  return [
    <span class="line">
      <span class="code">
        <b>{row.codeName}</b>
      </span>
      {spark(row)}
      {last(row)}
    </span>,
    <span class="line">
      <span class="code">
        <small>{withoutExchange(row.codeExch)}</small> {heldTag(isHere)}
      </span>
      <small>
        {change(row)} {share(row)}
      </small>
    </span>,
    <span class="line">
      <small class="figures">
        {priceText(row.bidPrice, row)} / {priceText(row.askPrice, row)}
      </small>
      <small>{limits(row)}</small>
    </span>,
  ];
}

// The ticket for the instrument, filled in with what is most likely wanted.
function trade(quote: Quote): void {
  const holders = store.lists.positions.rows.filter((row) => row.hashCode === quote.hashCode && isHeld(row));
  const wanted = [store.account, ...holders.map((row) => row.index), store.drafts.index];
  const account = accountFor(quote, store.lists.accounts.rows, wanted);
  if (account === undefined) return store.tell(t("noAccountFor", quote.codeName), true);
  const held = holdingOf(store.asker.positionOf({ index: account.index, hashCode: quote.hashCode }));
  store.draft(likelyTicket(account, store.quote(quote.hashCode) ?? quote, held));
  nav.open("trade");
}

export class Quotes extends Component<{}, { typed: string }> {
  state = { typed: "" };
  private heldOf: Position[] = [];
  private held: ReadonlySet<number> = new Set();
  private from: unknown[] = [];
  private arranged: Quote[] = [];

  // Arranged anew only if something has changed, so that rows keep their places while prices move.
  private rows(): Quote[] {
    const positions = store.lists.positions.rows;
    if (this.heldOf !== positions) this.held = new Set(positions.filter(isHeld).map((row) => row.hashCode));
    this.heldOf = positions;
    const from = [store.lists.quotes.rows, this.held, store.stars.all];
    if (from.some((each, place) => each !== this.from[place])) {
      this.from = from;
      this.arranged = arranged(store.lists.quotes.rows, store.stars.all, this.held);
    }
    return this.arranged;
  }

  private readonly actions = (row: Quote) => {
    const isOn = store.stars.has(row.hashCode);
    return [
      <Bell quote={row} />,
      <button
        class="icon star"
        aria-pressed={String(isOn)}
        aria-label={t("star", row.codeName)}
        onClick={() => {
          store.stars.toggle(row.hashCode);
          store.update();
        }}
      >
        <Icon path={kStar} />
      </button>,
    ];
  };

  render() {
    const { typed } = this.state;
    const rows = this.rows();
    return (
      <List
        name="quotes"
        title={t("quotes")}
        isOfAll={true}
        rows={rows}
        follow={(row: Quote) => store.quote(row.hashCode) ?? row}
        followed="live"
        fits={(row: Quote) => matches(row, typed)}
        fitsBy={typed}
        nameOf={(row: Quote) => String(row.hashCode)}
        columns={columnsOf(this.held)}
        kindOf={() => "triple"}
        card={(row: Quote) => card(row, this.held.has(row.hashCode))}
        onOpen={store.may("trade") ? trade : undefined}
        actions={this.actions}
        tools={
          <input
            type="search"
            class="search"
            aria-label={t("searchHint")}
            placeholder={t("searchHint")}
            autocomplete="off"
            value={typed}
            onInput={(event: Event) => this.setState({ typed: (event.target as HTMLInputElement).value })}
          />
        }
        total={() => <Bell />}
        caption={t("quoteCaption")}
      >
        <Alerts />
      </List>
    );
  }
}
