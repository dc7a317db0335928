import { h } from "preact";
import { nav, store } from "../app";
import { nameOf } from "../describe";
import { signed, whole } from "../format";
import { sheetArgument } from "../nav";
import { kMonitorFields } from "../texts/fields";
import { t } from "../texts/texts";
import { MonitorRow, OfCode } from "../wire/values";
import { Column, List } from "./list";
import { CodeName, FieldList, quoteOf } from "./parts";
import { Sheet } from "./sheet";

export const pairName = (row: OfCode): string => `${row.index}:${row.hashCode}`;

const pairText = (long: number, short: number): string => `${whole(long)} / ${whole(short)}`;
const targetOf = (row: MonitorRow): string => pairText(row.systemLongPos, row.systemShortPos);
const heldOf = (row: MonitorRow): string => pairText(row.accountLongPos, row.accountShortPos);
const gapOf = (row: MonitorRow): string => `${signed(row.longPosDif, 0)} / ${signed(row.shortPosDif, 0)}`;

function MatchTag(props: { row: MonitorRow }) {
  const { isMatchPosDif } = props.row;
  return <span class={isMatchPosDif ? "tag good" : "tag warn"}>{t(isMatchPosDif ? "match" : "mismatch")}</span>;
}

function card(row: MonitorRow) {
  const figure = (name: "target" | "held" | "difference", text: string) => (
    <span class="pair">
      <i>{t(name)}</i> <b class="figures">{text}</b>
    </span>
  );
  return [
    <span class="line">
      <CodeName row={row} />
      <MatchTag row={row} />
    </span>,
    <span class="line">
      {figure("target", targetOf(row))}
      {figure("held", heldOf(row))}
    </span>,
    <span class="line">
      {figure("difference", gapOf(row))}
      <small>{row.syncRuleDetail}</small>
    </span>,
  ];
}

const kColumns: readonly Column<MonitorRow>[] = [
  { name: "instrument", value: (row) => nameOf(row, quoteOf(row)), cell: (row) => <CodeName row={row} />, share: 2 },
  { name: "account", cell: (row) => row.userCode },
  { name: "target", cell: (row) => <span class="figures">{targetOf(row)}</span>, isNumber: true },
  { name: "held", cell: (row) => <span class="figures">{heldOf(row)}</span>, isNumber: true },
  {
    name: "difference",
    value: (row) => Math.abs(row.longPosDif) + Math.abs(row.shortPosDif),
    cell: (row) => <span class="figures">{gapOf(row)}</span>,
    isNumber: true,
  },
  { name: "rule", cell: (row) => row.syncRuleDetail },
  { name: "status", value: (row) => Number(row.isMatchPosDif), cell: (row) => <MatchTag row={row} /> },
];

let mismatchesFirst: { from: MonitorRow[]; rows: MonitorRow[] } = { from: [], rows: [] };

function sorted(all: MonitorRow[]): MonitorRow[] {
  if (mismatchesFirst.from !== all) {
    const rows = [...all].sort((a, b) => Number(a.isMatchPosDif) - Number(b.isMatchPosDif));
    mismatchesFirst = { from: all, rows };
  }
  return mismatchesFirst.rows;
}

// The target and what is held, each long / short.
export function Differences() {
  const rows = sorted(store.lists.monitor.rows);
  const opened = sheetArgument(store.place.sheet, "row");
  const open = rows.find((row) => pairName(row) === opened);
  return (
    <List
      name="monitor"
      title={t("monitor")}
      rows={rows}
      nameOf={(row: MonitorRow) => pairName(row)}
      columns={kColumns}
      kindOf={() => "triple"}
      card={card}
      onOpen={(row: MonitorRow) => nav.open(`row=${pairName(row)}`)}
    >
      {open === undefined ? null : (
        <Sheet title={`${nameOf(open, quoteOf(open))} · ${open.userCode}`}>
          <FieldList fields={kMonitorFields} row={open} />
        </Sheet>
      )}
    </List>
  );
}
