import { Component, h } from "preact";
import { kMonitorFields } from "../fields";
import { signed, whole } from "../format";
import { store } from "../store";
import { t } from "../texts";
import { MonitorRow, OfCode } from "../wire";
import { CodeName, FieldList, ListFrame, nameOf, Sheet } from "./parts";
import { Rows } from "./rows";

export const pairName = (row: OfCode): string => `${row.index}:${row.hashCode}`;

function Targets(props: { title: string; long: number; short: number }) {
  return (
    <span class="pair">
      <i>{props.title}</i>{" "}
      <b class="num">
        {whole(props.long)} / {whole(props.short)}
      </b>
    </span>
  );
}

function DifferenceRow(props: { row: MonitorRow; onOpen: () => void }) {
  const { row } = props;
  return (
    <button class="row-main" onClick={props.onOpen}>
      <span class="line">
        <CodeName row={row} />
        <span class={row.isMatchPosDif ? "tag good" : "tag warn"}>{t(row.isMatchPosDif ? "match" : "mismatch")}</span>
      </span>
      <span class="line">
        <Targets title={t("target")} long={row.systemLongPos} short={row.systemShortPos} />
        <Targets title={t("held")} long={row.accountLongPos} short={row.accountShortPos} />
      </span>
      <span class="line">
        <span class="pair">
          <i>{t("difference")}</i>{" "}
          <b class="num">
            {signed(row.longPosDif, 0)} / {signed(row.shortPosDif, 0)}
          </b>
        </span>
        <small>
          {row.syncRuleDetail} · {row.userCode}
        </small>
      </span>
    </button>
  );
}

// What should be held and what is held, long / short.
export class Differences extends Component<{}, { open: string }> {
  state = { open: "" };

  render() {
    const matches = (row: MonitorRow) => Number(row.isMatchPosDif);
    const rows = [...store.picked(store.lists.monitor.rows)].sort((a, b) => matches(a) - matches(b));
    const open = rows.find((row) => pairName(row) === this.state.open);
    return (
      <ListFrame name="monitor" title={t("monitor")} count={rows.length} ofAccounts>
        <Rows
          rows={rows}
          nameOf={pairName}
          height={5.75}
          render={(row: MonitorRow) => (
            <DifferenceRow row={row} onOpen={() => this.setState({ open: pairName(row) })} />
          )}
        />
        {open === undefined ? null : (
          <Sheet title={`${nameOf(open)} · ${open.userCode}`} onClose={() => this.setState({ open: "" })}>
            <FieldList fields={kMonitorFields} row={open} />
          </Sheet>
        )}
      </ListFrame>
    );
  }
}
