import { Component, h } from "preact";
import { kPositionFields } from "../fields";
import { signed, whole } from "../format";
import { store } from "../store";
import { t, TextName } from "../texts";
import { Position } from "../wire";
import { averageText, CodeName, FieldList, Gain, ListFrame, nameOf, priceText, Sheet, Total } from "./parts";
import { Rows } from "./rows";

const keyOf = (row: Position): string => `${row.index}:${row.hashCode}`;

function Leg(props: { name: TextName; volume: number; free: number; average: number; hashCode: number }) {
  return (
    <span class={props.volume === 0 ? "leg none" : `leg ${props.name}`}>
      <i>{t(props.name)}</i> <b class="num">{whole(props.volume)}</b>
      <small class="num">
        {props.volume === 0 ? "" : ` /${whole(props.free)} @ ${averageText(props.average, props.hashCode)}`}
      </small>
    </span>
  );
}

function PositionRow(props: { row: Position; onOpen: () => void }) {
  const { row } = props;
  const { hashCode } = row;
  return (
    <button class="row-main" onClick={props.onOpen}>
      <span class="line">
        <CodeName row={row} />
        <Gain value={row.floatPorfit} text={signed(row.floatPorfit, 2)} class="big" />
      </span>
      <span class="line">
        <Leg
          name="long"
          volume={row.longPosition}
          free={row.longAvailableQuantity}
          average={row.longAvgPrice}
          hashCode={hashCode}
        />
        <span class="num">{priceText(row.currentPrice, hashCode)}</span>
      </span>
      <span class="line">
        <Leg
          name="short"
          volume={row.shortPosition}
          free={row.shortAvailableQuantity}
          average={row.shortAvgPrice}
          hashCode={hashCode}
        />
        <small>{row.userCode}</small>
      </span>
    </button>
  );
}

export class Positions extends Component<{}, { open: string }> {
  state = { open: "" };

  render() {
    const rows = store.picked(store.lists.positions.rows);
    const open = rows.find((row) => keyOf(row) === this.state.open);
    const profit = rows.reduce((sum, row) => sum + Number(row.floatPorfit), 0);
    return (
      <ListFrame name="positions" title={t("positions")} count={rows.length} ofAccounts>
        <Total name={t("floating")} profit={profit} />
        <Rows
          rows={rows}
          nameOf={keyOf}
          height={5.75}
          render={(row: Position) => <PositionRow row={row} onOpen={() => this.setState({ open: keyOf(row) })} />}
        />
        {open === undefined ? null : (
          <Sheet title={`${nameOf(open)} · ${open.userCode}`} onClose={() => this.setState({ open: "" })}>
            <FieldList fields={kPositionFields} row={open} />
          </Sheet>
        )}
      </ListFrame>
    );
  }
}
