import { Component, h } from "preact";
import { store } from "../app";
import { priceText } from "../describe";
import { t } from "../texts/texts";
import { findInstruments } from "../ticket/ticket";
import { Account, Quote } from "../wire/values";
import { FieldFailure } from "./controls";

const kMostFound = 50;

export function AccountField(props: { value: number; isFixed?: boolean; onPick: (index: number) => void }) {
  return (
    <label class="field">
      <span class="hidden">{t("account")}</span>
      <select
        value={String(props.value)}
        disabled={props.isFixed}
        onChange={(event: Event) => props.onPick(Number((event.target as HTMLSelectElement).value))}
      >
        {store.lists.accounts.rows.map((account) => (
          <option key={String(account.index)} value={String(account.index)}>
            {account.userCode}
            {account.accountStatus === 0 ? ` · ${t("offline")}` : ""}
          </option>
        ))}
      </select>
    </label>
  );
}

interface Props {
  account: Account | undefined;
  picked: Quote | undefined;
  isFixed?: boolean;
  failure?: string;
  hasFocus?: boolean; // from the start
  onPick: (quote: Quote) => void;
}

// A combo box: typing searches by code and name, arrows and Enter pick, and so does a tap.
export class InstrumentField extends Component<Props, { typed: string | null; active: number }> {
  state: { typed: string | null; active: number } = { typed: null, active: 0 };

  // A tap on what is picked leads to the search.
  componentDidUpdate(_: Props, previous: { typed: string | null }) {
    if (previous.typed === null && this.state.typed !== null) this.base.querySelector("input")?.focus();
  }

  private pick(quote: Quote) {
    this.setState({ typed: null, active: 0 });
    this.props.onPick(quote);
  }

  private onKey(event: KeyboardEvent, found: Quote[]) {
    const step = { ArrowDown: 1, ArrowUp: -1 }[event.key];
    if (step !== undefined) {
      event.preventDefault();
      const active = Math.min(found.length - 1, Math.max(0, this.state.active + step));
      this.setState({ typed: this.state.typed ?? "", active });
    } else if (event.key === "Enter" && this.state.typed !== null) {
      event.preventDefault();
      if (found[this.state.active] !== undefined) this.pick(found[this.state.active]);
    } else if (event.key === "Escape" && this.state.typed !== null) {
      event.preventDefault();
      this.setState({ typed: null });
    }
  }

  private found(): Quote[] {
    const { account } = this.props;
    const { typed } = this.state;
    if (account === undefined || typed === null) return [];
    return findInstruments(store.lists.quotes.rows, account, typed).slice(0, kMostFound);
  }

  private option(quote: Quote, place: number) {
    const isActive = place === this.state.active;
    return (
      <li
        key={String(quote.hashCode)}
        id={`found${place}`}
        role="option"
        aria-selected={String(isActive)}
        class={isActive ? "active" : ""}
        onMouseDown={(event: Event) => event.preventDefault()}
        onClick={() => this.pick(quote)}
      >
        <span>
          {quote.codeName} <small>{quote.codeExch}</small>
        </span>
        <span class="num">{priceText(quote.lastPrice, quote)}</span>
      </li>
    );
  }

  private search(found: Quote[]) {
    const { typed, active } = this.state;
    const failure = this.props.failure ?? "";
    return (
      <input
        id="instrument"
        role="combobox"
        aria-label={t("instrument")}
        aria-expanded={String(typed !== null)}
        aria-controls="found"
        aria-autocomplete="list"
        aria-activedescendant={typed !== null && found.length > 0 ? `found${active}` : null}
        aria-invalid={failure === "" ? null : "true"}
        aria-describedby={failure === "" ? null : "instrument-failure"}
        autocomplete="off"
        autofocus={this.props.hasFocus}
        placeholder={t("searchHint")}
        value={typed ?? ""}
        onFocus={() => this.setState({ typed: "", active: 0 })}
        onBlur={() => this.setState({ typed: null })}
        onInput={(event: Event) => this.setState({ typed: (event.target as HTMLInputElement).value, active: 0 })}
        onKeyDown={(event: KeyboardEvent) => this.onKey(event, found)}
      />
    );
  }

  render() {
    const { picked, account, isFixed } = this.props;
    const { typed } = this.state;
    const found = this.found();
    return (
      <div class="field combo">
        {picked === undefined || typed !== null ? (
          this.search(found)
        ) : (
          <button type="button" disabled={isFixed} onClick={() => this.setState({ typed: "", active: 0 })}>
            <span class="hidden">{t("instrument")}</span> {picked.codeName} <small>{picked.codeExch}</small>
          </button>
        )}
        {typed === null ? null : (
          <ul class="found" id="found" role="listbox" tabIndex={-1} aria-label={t("instrument")}>
            {found.map((quote, place) => this.option(quote, place))}
            {found.length === 0 ? <li class="empty">{t(account === undefined ? "loading" : "noMatch")}</li> : null}
          </ul>
        )}
        <FieldFailure id="instrument" text={this.props.failure ?? ""} />
      </div>
    );
  }
}
