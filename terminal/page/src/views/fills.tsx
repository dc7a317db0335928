import { h } from "preact";
import { nav, store } from "../app";
import { nameOf, priceText } from "../describe";
import { timeOfDay, whole } from "../format";
import { sheetArgument } from "../nav";
import { fillName } from "../state/merge";
import { kFillFields } from "../texts/fields";
import { t } from "../texts/texts";
import { Fill } from "../wire/values";
import { Column, List } from "./list";
import { Amount, CodeName, Deal, FieldList, quoteOf } from "./parts";
import { PositionActions } from "./positionactions";
import { Sheet } from "./sheet";

function card(row: Fill) {
  return [
    <span class="line">
      <CodeName row={row} />
      <Amount row={row} />
    </span>,
    <span class="line">
      <Deal side={row.side} offset={row.combOffset} hashCode={row.hashCode} />
      <small class="num">{timeOfDay(row.exchTimestamp)}</small>
    </span>,
  ];
}

const kColumns: readonly Column<Fill>[] = [
  { name: "time", value: (row) => row.exchTimestamp, cell: (row) => timeOfDay(row.exchTimestamp) },
  { name: "instrument", value: (row) => nameOf(row, quoteOf(row)), cell: (row) => <CodeName row={row} />, share: 2 },
  { name: "account", cell: (row) => row.userCode },
  { name: "deal", cell: (row) => <Deal side={row.side} offset={row.combOffset} hashCode={row.hashCode} /> },
  { name: "price", cell: (row) => <span class="num">{priceText(row.price, quoteOf(row))}</span>, isNumber: true },
  {
    name: "volume",
    value: (row) => row.volume,
    cell: (row) => <span class="num">{whole(row.volume)}</span>,
    isNumber: true,
  },
];

let newestFirst: { from: Fill[]; rows: Fill[] } = { from: [], rows: [] };

function sorted(all: Fill[]): Fill[] {
  if (newestFirst.from !== all) {
    newestFirst = { from: all, rows: [...all].sort((a, b) => b.exchTimestamp - a.exchTimestamp) };
  }
  return newestFirst.rows;
}

export function Fills() {
  const rows = sorted(store.lists.fills.rows);
  const opened = sheetArgument(store.place.sheet, "row");
  const open = rows.find((row) => fillName(row) === opened);
  return (
    <List
      name="fills"
      title={t("fills")}
      rows={rows}
      nameOf={fillName}
      columns={kColumns}
      card={card}
      onOpen={(row: Fill) => nav.open(`row=${fillName(row)}`)}
    >
      {open === undefined ? null : (
        <Sheet title={`${nameOf(open, quoteOf(open))} · ${open.userCode}`}>
          <p class="line">
            <Deal side={open.side} offset={open.combOffset} hashCode={open.hashCode} />
            <small class="num">{timeOfDay(open.exchTimestamp)}</small>
          </p>
          <FieldList fields={kFillFields} row={open} />
          <PositionActions pair={open} />
        </Sheet>
      )}
    </List>
  );
}
