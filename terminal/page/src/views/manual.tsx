import { Component, h } from "preact";
import { whole } from "../format";
import { store } from "../store";
import { t } from "../texts";
import { isCount, moved } from "../ticket";
import { ManualPosition, Quote } from "../wire";
import { pairName } from "./monitor";
import { CodeName, Confirm, ListFrame, nameOf, Note, Sheet, Stepper } from "./parts";
import { AccountField, InstrumentField } from "./pickers";
import { Rows } from "./rows";

const kMostLots = 1000; // of an instrument's limit for one order

interface Draft {
  isNew: boolean;
  index: number;
  quote: Quote | undefined;
  long: string;
  short: string;
}

interface State {
  draft: Draft | null;
  clearing: ManualPosition | null;
  failure: string;
  isSending: boolean;
}

export class Manual extends Component<{}, State> {
  state: State = { draft: null, clearing: null, failure: "", isSending: false };

  private close = () => this.setState({ draft: null, clearing: null, failure: "", isSending: false });

  private change(change: Partial<Draft>) {
    if (this.state.draft !== null) this.setState({ draft: { ...this.state.draft, ...change } });
  }

  private edit(row: ManualPosition) {
    const { index, hashCode, longPos, shortPos } = row;
    const draft = { isNew: false, index, quote: store.quote(hashCode), long: `${longPos}`, short: `${shortPos}` };
    this.setState({ draft, failure: "" });
  }

  private add = () => {
    const index = store.account || (store.lists.accounts.rows[0]?.index ?? 0);
    this.setState({ draft: { isNew: true, index, quote: undefined, long: "0", short: "0" }, failure: "" });
  };

  private async send(topic: string, body: object, done: string) {
    this.setState({ isSending: true, failure: "" });
    const { failure } = await store.act(topic, [body], ["manual", "monitor", "sync"]);
    const isOpen = this.base && this.state.isSending; // the dialog may have been closed meanwhile
    if (isOpen && failure !== "") return this.setState({ isSending: false, failure });
    store.tell(failure || done, failure !== "");
    if (isOpen) this.close();
  }

  private save(draft: Draft) {
    const { quote, index } = draft;
    if (quote === undefined) return this.setState({ failure: t("pick") });
    const most = kMostLots * quote.maxVolume;
    if (!isCount(draft.long, 0, most) || !isCount(draft.short, 0, most)) {
      return this.setState({ failure: t("badPositions") });
    }
    const body = { index, hashCode: quote.hashCode, longPos: Number(draft.long), shortPos: Number(draft.short) };
    void this.send("monitor.manual.update", body, t("saved", quote.codeName));
  }

  private stepper(name: "long" | "short", draft: Draft) {
    const step = draft.quote?.volumeStep ?? 1;
    return (
      <Stepper
        label={t(name)}
        mode="numeric"
        value={draft[name]}
        onChange={(value) => this.change({ [name]: value })}
        onStep={(steps) => this.change({ [name]: moved(draft[name], steps, step, 0, Infinity) })}
      />
    );
  }

  private editor(draft: Draft) {
    const { quote } = draft;
    return (
      <Sheet title={t(draft.isNew ? "addManual" : "editManual")} onClose={this.close}>
        <form
          onSubmit={(event: Event) => {
            event.preventDefault();
            this.save(draft);
          }}
        >
          <AccountField
            value={draft.index}
            isFixed={!draft.isNew}
            onPick={(index) => this.change({ index, quote: undefined })}
          />
          <InstrumentField
            account={store.accountOf(draft.index)}
            picked={quote}
            isFixed={!draft.isNew}
            onPick={(picked) => this.change({ quote: picked })}
          />
          {this.stepper("long", draft)}
          {this.stepper("short", draft)}
          <div class="actions">
            <Note text={this.state.failure} />
            <button type="button" onClick={this.close}>
              {t("back")}
            </button>
            <button class="primary" disabled={this.state.isSending}>
              {t("save")}
            </button>
          </div>
        </form>
      </Sheet>
    );
  }

  private question(row: ManualPosition) {
    const { index, hashCode } = row;
    const clear = () => void this.send("monitor.manual.clean", { index, hashCode }, t("cleared", nameOf(row)));
    return (
      <Sheet title={t("clear")} onClose={this.close}>
        <p>{t("clearQuestion", `${nameOf(row)} · ${row.userCode}`)}</p>
        <div class="actions">
          <Note text={this.state.failure} />
          <button onClick={this.close}>{t("abort")}</button>
          <Confirm tone="danger" text={t("clear")} disabled={this.state.isSending} onConfirm={clear} />
        </div>
      </Sheet>
    );
  }

  private row(row: ManualPosition) {
    return (
      <div class="row-pair">
        <span class="row-main row-text">
          <span class="line">
            <CodeName row={row} />
          </span>
          <span class="line">
            <span class="num">
              {t("long")} <b>{whole(row.longPos)}</b> · {t("short")} <b>{whole(row.shortPos)}</b>
            </span>
          </span>
          <small>{row.userCode}</small>
        </span>
        {store.may("trade") ? (
          <span class="row-buttons">
            <button aria-label={t("editOf", nameOf(row))} onClick={() => this.edit(row)}>
              {t("edit")}
            </button>
            <button
              aria-label={t("clearOf", nameOf(row))}
              onClick={() => this.setState({ clearing: row, failure: "" })}
            >
              {t("clear")}
            </button>
          </span>
        ) : null}
      </div>
    );
  }

  render() {
    const rows = store.picked(store.lists.manual.rows);
    const { draft, clearing } = this.state;
    return (
      <ListFrame name="manual" title={t("manual")} count={rows.length} ofAccounts>
        {store.may("trade") ? (
          <button class="wide add" onClick={this.add}>
            {t("addManual")}
          </button>
        ) : null}
        <Rows rows={rows} nameOf={pairName} height={5.5} render={(row: ManualPosition) => this.row(row)} />
        {draft === null ? null : this.editor(draft)}
        {clearing === null ? null : this.question(clearing)}
      </ListFrame>
    );
  }
}
