import { Component, h } from "preact";
import { nav, store } from "../app";
import { conditionText, priceText } from "../describe";
import { decimalsOf, percent } from "../format";
import { sheetArgument } from "../nav";
import { t } from "../texts/texts";
import { isOnGrid, moved, readNumber } from "../ticket/numbers";
import { Alert, Bodies, Quote } from "../wire/values";
import { Choices, kSettleMs, Stepper } from "./controls";
import { Icon, Note } from "./parts";
import { Sheet } from "./sheet";

const kBell = "M5 17h14c-2-2-2-4-2-7a5 5 0 0 0-10 0c0 3 0 5-2 7zM10 20h4";
const kPreset = 1.01; // of the last price

const of = (hashCode: number): readonly Alert[] =>
  store.alerts.waiting.filter((each) => hashCode === 0 || each.hashCode === hashCode);

// Opens the alerts of an instrument, or of all; it is lit if there are any.
export function Bell(props: { quote?: Quote }) {
  const { quote } = props;
  const count = of(quote?.hashCode ?? 0).length;
  const name = quote === undefined ? t("alerts") : t("alertsOf", quote.codeName);
  return (
    <button
      class={count > 0 ? "icon bell lit" : "icon bell"}
      aria-haspopup="dialog"
      aria-label={count > 0 ? t("alertCount", name, count) : name}
      onClick={() => nav.open(quote === undefined ? "alerts" : `alerts=${quote.hashCode}`)}
    >
      <Icon path={kBell} />
    </button>
  );
}

interface State {
  typed: string; // the price
  picked: boolean | null; // the direction; null: as the price suggests
  isSending: boolean;
  failure: string;
}

// The alerts of an instrument with a form for another, or those of all instruments.
class AlertSheet extends Component<{ quote?: Quote }, State> {
  state: State = { typed: presetOf(this.props.quote), picked: null, isSending: false, failure: "" };

  // Another page of the same token may have changed them.
  componentDidMount() {
    void store.alerts.ask();
  }

  private wanted(quote: Quote) {
    const price = readNumber(this.state.typed);
    return { hashCode: quote.hashCode, above: this.state.picked ?? !(price < quote.lastPrice), price };
  }

  // Takes no tap for a moment after the reply: the rows have moved under the finger. Returns whether it was done.
  private async send<Topic extends "alert.set" | "alert.clear">(topic: Topic, body: Bodies[Topic]) {
    const { sheet } = store.place;
    this.setState({ isSending: true, failure: "" });
    const failure = await store.alerts.request(topic, body);
    this.setState({ failure });
    store.platform.later(() => this.setState({ isSending: false }), kSettleMs);
    const isOpen = store.place.sheet === sheet; // the dialog may have been closed meanwhile
    if (!isOpen && failure !== "") store.tell(failure, true);
    return failure === "";
  }

  private async set(quote: Quote) {
    const wanted = this.wanted(quote);
    if (await this.send("alert.set", wanted)) {
      store.tell(t("alertSet", `${quote.codeName} ${conditionText(wanted, quote)}`));
    }
  }

  // The button, which has the focus, goes with its row.
  private remove(alert: Alert) {
    this.base.querySelector("h2")?.focus();
    void this.send("alert.clear", [alert.id]);
  }

  private form(quote: Quote) {
    const { typed, isSending } = this.state;
    const { above, price } = this.wanted(quote);
    const isPrice = price > 0 && isOnGrid(price, quote.priceTick);
    const isSet = of(quote.hashCode).some((each) => each.above === above && each.price === price);
    return (
      <form
        onSubmit={(event: Event) => {
          event.preventDefault();
          void this.set(quote);
        }}
      >
        <Stepper
          id="alert-price"
          label={t("price")}
          mode="decimal"
          value={typed}
          failure={isPrice ? "" : t("badAlert", quote.priceTick.toFixed(decimalsOf(quote.priceTick)))}
          onChange={(text) => this.setState({ typed: text })}
          onStep={(steps) => this.setState({ typed: moved(typed, steps, quote.priceTick, quote.priceTick, Infinity) })}
        />
        <Choices
          name="alert-direction"
          label={t("direction")}
          value={Number(above)}
          values={[1, 0]}
          text={(value) => t(value === 1 ? "risesTo" : "fallsTo")}
          onPick={(value) => this.setState({ picked: value === 1 })}
        />
        <button class="primary wide" disabled={isSending || !isPrice || isSet}>
          {t("setAlert")}
        </button>
      </form>
    );
  }

  private row(alert: Alert) {
    const quote = store.quote(alert.hashCode);
    const name = this.props.quote === undefined ? (quote?.codeName ?? String(alert.hashCode)) : "";
    const condition = conditionText(alert, quote);
    return (
      <li key={String(alert.id)} class="alert">
        <span>
          {name} <span class="num">{condition}</span>
        </span>
        <small class="num">{quote === undefined ? "" : percent(alert.price / quote.lastPrice - 1, true)}</small>
        <button
          class="icon"
          disabled={this.state.isSending}
          aria-label={t("deleteAlert", `${name} ${condition}`.trim())}
          onClick={() => this.remove(alert)}
        >
          ✕
        </button>
      </li>
    );
  }

  render() {
    const { quote } = this.props;
    const rows = of(quote?.hashCode ?? 0).map((row) => this.row(row));
    return (
      <Sheet
        title={quote === undefined ? t("alerts") : t("alertsOf", quote.codeName)}
        aside={quote === undefined ? null : <span class="num">{priceText(quote.lastPrice, quote)}</span>}
      >
        {quote === undefined ? null : this.form(quote)}
        <Note text={this.state.failure} />
        {quote === undefined && rows.length === 0 ? <p class="hint">{t("noAlerts")}</p> : <ul class="alerts">{rows}</ul>}
      </Sheet>
    );
  }
}

function presetOf(quote: Quote | undefined): string {
  if (quote === undefined) return "";
  const { lastPrice, priceTick } = quote;
  return moved(String(lastPrice * kPreset), 0, priceTick, priceTick, Infinity);
}

// The dialog of the address, if it is one of these.
export function Alerts() {
  const { sheet } = store.place;
  if (sheet === "alerts") return <AlertSheet key="all" />;
  const quote = store.quote(Number(sheetArgument(sheet, "alerts")));
  return quote === undefined ? null : <AlertSheet key={sheet} quote={quote} />;
}
