import { Component, h } from "preact";
import { nav, store } from "../app";
import { nameOf } from "../describe";
import { whole } from "../format";
import { sheetArgument } from "../nav";
import { act } from "../state/actions";
import { t } from "../texts/texts";
import { isCount, moved, readNumber } from "../ticket/numbers";
import { Bodies, ManualPosition, Quote, Replies } from "../wire/values";
import { Confirm, Stepper } from "./controls";
import { Column, List } from "./list";
import { pairName } from "./monitor";
import { CodeName, Note, quoteOf } from "./parts";
import { AccountField, InstrumentField } from "./pickers";
import { Sheet } from "./sheet";

const kMostLots = 1000; // of an instrument's limit for one order, as the terminal takes

interface Draft {
  isNew: boolean;
  index: number;
  quote: Quote | undefined;
  long: string;
  short: string;
}

interface State {
  draft: Draft | null;
  failure: string;
  isSending: boolean;
}

function card(row: ManualPosition) {
  return [
    <span class="line">
      <CodeName row={row} />
    </span>,
    <span class="line">
      <span class="figures">
        {t("long")} <b>{whole(row.longPos)}</b> · {t("short")} <b>{whole(row.shortPos)}</b>
      </span>
    </span>,
  ];
}

const kColumns: readonly Column<ManualPosition>[] = [
  { name: "instrument", value: (row) => nameOf(row, quoteOf(row)), cell: (row) => <CodeName row={row} />, share: 2 },
  { name: "account", cell: (row) => row.userCode },
  {
    name: "long",
    value: (row) => row.longPos,
    cell: (row) => <span class="num">{whole(row.longPos)}</span>,
    isNumber: true,
  },
  {
    name: "short",
    value: (row) => row.shortPos,
    cell: (row) => <span class="num">{whole(row.shortPos)}</span>,
    isNumber: true,
  },
];

export class Manual extends Component<{}, State> {
  state: State = { draft: null, failure: "", isSending: false };

  private change(change: Partial<Draft>) {
    if (this.state.draft !== null) this.setState({ draft: { ...this.state.draft, ...change } });
  }

  private open(draft: Draft | null, sheet: string) {
    this.setState({ draft, failure: "", isSending: false });
    nav.open(sheet);
  }

  private edit(row: ManualPosition) {
    const { index, longPos, shortPos } = row;
    this.open({ isNew: false, index, quote: quoteOf(row), long: `${longPos}`, short: `${shortPos}` }, "manual");
  }

  private readonly add = () => {
    const index = store.account || (store.lists.accounts.rows[0]?.index ?? 0);
    this.open({ isNew: true, index, quote: undefined, long: "0", short: "0" }, "manual");
  };

  private async send<Topic extends keyof Bodies & keyof Replies>(topic: Topic, body: Bodies[Topic], done: string) {
    const { sheet } = store.place;
    this.setState({ isSending: true, failure: "" });
    const { failure } = await act(store, topic, body, ["manual", "monitor", "sync"]);
    const isOpen = store.place.sheet === sheet; // the dialog may have been closed meanwhile
    if (isOpen && failure !== "") return this.setState({ isSending: false, failure });
    store.tell(failure || done, failure !== "");
    if (isOpen) nav.close();
  }

  private save(draft: Draft) {
    const { quote, index } = draft;
    if (quote === undefined) return this.setState({ failure: t("badInstrument") });
    const most = kMostLots * quote.maxVolume;
    if (!isCount(draft.long, 0, most) || !isCount(draft.short, 0, most)) {
      return this.setState({ failure: t("badPositions") });
    }
    const [longPos, shortPos] = [readNumber(draft.long), readNumber(draft.short)];
    const body = { index, hashCode: quote.hashCode, longPos, shortPos };
    void this.send("monitor.manual.update", [body], t("saved", quote.codeName));
  }

  private stepper(name: "long" | "short", draft: Draft) {
    const step = draft.quote?.volumeStep ?? 1;
    return (
      <Stepper
        id={name}
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
      <Sheet title={t(draft.isNew ? "addManual" : "editManual")}>
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
            <button class="primary wide" disabled={this.state.isSending}>
              {t("save")}
            </button>
          </div>
        </form>
      </Sheet>
    );
  }

  // The body names the one position: an empty one would clear every account.
  private question(row: ManualPosition) {
    const { index, hashCode } = row;
    const name = nameOf(row, quoteOf(row));
    const clear = () => void this.send("monitor.manual.clean", [{ index, hashCode }], t("cleared", name));
    return (
      <Sheet title={t("clear")}>
        <p>{t("clearQuestion", `${name} · ${row.userCode}`)}</p>
        <div class="actions">
          <Note text={this.state.failure} />
          <button onClick={() => nav.close()}>{t("abort")}</button>
          <Confirm tone="danger" text={t("clear")} disabled={this.state.isSending} onConfirm={clear} />
        </div>
      </Sheet>
    );
  }

  private readonly buttons = (row: ManualPosition) => {
    const name = nameOf(row, quoteOf(row));
    return [
      <button aria-label={t("editOf", name)} onClick={() => this.edit(row)}>
        {t("edit")}
      </button>,
      <button aria-label={t("clearOf", name)} onClick={() => this.open(null, `clear=${pairName(row)}`)}>
        {t("clear")}
      </button>,
    ];
  };

  render() {
    const { rows } = store.lists.manual;
    const { draft } = this.state;
    const { sheet } = store.place;
    const clearing = sheetArgument(sheet, "clear");
    const cleared = rows.find((row) => pairName(row) === clearing);
    return (
      <List
        name="manual"
        title={t("manual")}
        rows={rows}
        nameOf={(row: ManualPosition) => pairName(row)}
        columns={kColumns}
        card={card}
        hasOwnOrder
        actions={store.may("trade") ? this.buttons : undefined}
        tools={store.may("trade") ? (
            <button class="small" onClick={this.add}>
              {t("addManual")}
            </button>
          ) : null}
      >
        {sheet === "manual" && draft !== null ? this.editor(draft) : null}
        {cleared === undefined ? null : this.question(cleared)}
      </List>
    );
  }
}
