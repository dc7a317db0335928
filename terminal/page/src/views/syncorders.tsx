import { Component, h } from "preact";
import { nav, store } from "../app";
import { nameOf, priceText } from "../describe";
import { whole } from "../format";
import { act } from "../state/actions";
import { areOffered, bodyOf, kMostAtOnce, namedOffers, Offer } from "../state/offers";
import { t } from "../texts/texts";
import { SyncOrder } from "../wire/values";
import { Confirm } from "./controls";
import { Column, List, rowsOfAccount } from "./list";
import { Amount, CodeName, Deal, Note, quoteOf } from "./parts";
import { Sheet } from "./sheet";

interface State {
  picked: string[]; // names of offers
  asked: Offer[]; // as the dialog shows them
  isSending: boolean;
  failure: string;
}

function card(row: Offer) {
  return [
    <span class="line">
      <CodeName row={row} />
    </span>,
    <span class="line">
      <Deal side={row.side} offset={row.combOffsetFlag} hashCode={row.hashCode} />
      <Amount row={row} />
    </span>,
  ];
}

const kColumns: readonly Column<Offer>[] = [
  { name: "instrument", value: (row) => nameOf(row, quoteOf(row)), cell: (row) => <CodeName row={row} />, share: 2 },
  { name: "account", cell: (row) => row.userCode },
  { name: "deal", cell: (row) => <Deal side={row.side} offset={row.combOffsetFlag} hashCode={row.hashCode} /> },
  { name: "price", cell: (row) => <span class="num">{priceText(row.price, quoteOf(row))}</span>, isNumber: true },
  {
    name: "volume",
    value: (row) => row.volume,
    cell: (row) => <span class="num">{whole(row.volume)}</span>,
    isNumber: true,
  },
];

// The orders that would bring what is held to its target: picked, reviewed and placed.
export class SyncOrders extends Component<{}, State> {
  state: State = { picked: [], asked: [], isSending: false, failure: "" };
  private offers: { from: SyncOrder[]; rows: Offer[] } = { from: [], rows: [] };

  private all(): Offer[] {
    const from = store.lists.sync.rows;
    if (this.offers.from !== from) this.offers = { from, rows: namedOffers(from) };
    return this.offers.rows;
  }

  private pick(offer: Offer, isPicked: boolean) {
    const others = this.state.picked.filter((name) => name !== offer.name);
    this.setState({ picked: isPicked ? [...others, offer.name] : others });
  }

  private readonly ask = (asked: Offer[]) => {
    this.setState({ asked, failure: "" });
    nav.open("sync");
  };

  private async place(offers: Offer[]) {
    this.setState({ isSending: true, failure: "" });
    const body = bodyOf(offers);
    const { failure, isKnown } = await act(store, "monitor.sync.order.new", body, ["sync", "monitor", "orders"]);
    const isOpen = store.place.sheet === "sync"; // the dialog may have been closed meanwhile
    if (isOpen && isKnown && failure !== "") return this.setState({ isSending: false, failure });
    // If the reply was lost they may have been placed: nothing stays picked that another tap would place again.
    this.setState({ isSending: false, picked: [], asked: [] });
    if (isOpen) nav.close();
    store.tell(failure || t("placed", offers.length), failure !== "");
  }

  private question() {
    const { asked, isSending, failure } = this.state;
    const isOffered = areOffered(asked, this.all());
    return (
      <Sheet title={t("placeQuestion", asked.length)}>
        <ul class="plain asked">
          {asked.map((offer) => (
            <li key={offer.name}>
              {card(offer)}
            </li>
          ))}
        </ul>
        <div class="actions">
          <Note text={isOffered || isSending ? failure : t("offersChanged")} />
          <button onClick={() => nav.close()}>{t("back")}</button>
          <Confirm
            text={t("place")}
            disabled={isSending || !isOffered || asked.length === 0 || store.isStale("sync")}
            onConfirm={() => void this.place(asked)}
          />
        </div>
      </Sheet>
    );
  }

  private pickAll(rows: Offer[], count: number) {
    const areAll = count > 0 && count === Math.min(rows.length, kMostAtOnce);
    const pick = () => this.setState({ picked: areAll ? [] : rows.slice(0, kMostAtOnce).map((row) => row.name) });
    return (
      <label class="check all">
        <input type="checkbox" checked={areAll} onChange={pick} />
        <span>{t("pickAll")}</span>
      </label>
    );
  }

  render() {
    const all = this.all();
    const rows = rowsOfAccount(all);
    const names = new Set(this.state.picked);
    const picked = rows.filter((offer) => names.has(offer.name)).slice(0, kMostAtOnce);
    const shown = new Set(picked.map((offer) => offer.name));
    const mayTrade = store.may("trade");
    const wrap = (offer: Offer, content: unknown) => (
      <label class="row-main check">
        <input
          type="checkbox"
          checked={shown.has(offer.name)}
          onChange={(event: Event) => this.pick(offer, (event.target as HTMLInputElement).checked)}
        />
        <span class="row-text">{content}</span>
      </label>
    );
    return (
      <List
        name="sync"
        title={t("sync")}
        rows={all}
        nameOf={(offer: Offer) => offer.name}
        columns={kColumns}
        card={card}
        hasOwnOrder
        wrap={mayTrade ? wrap : undefined}
        empty={t("inSync")}
        tools={mayTrade && rows.length > 0 ? this.pickAll(rows, picked.length) : null}
      >
        {picked.length > 0 ? (
          <button class="primary wide stick" disabled={store.isStale("sync")} onClick={() => this.ask(picked)}>
            {t("placePicked", picked.length)}
          </button>
        ) : null}
        {store.place.sheet === "sync" && this.state.asked.length > 0 ? this.question() : null}
      </List>
    );
  }
}
