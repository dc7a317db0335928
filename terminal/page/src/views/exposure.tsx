import "./pictures.css";
import { h } from "preact";
import { store } from "../app";
import { nameOf } from "../describe";
import { Exposure, exposures } from "../exposure";
import { whole } from "../format";
import { kClassFields } from "../texts/fields";
import { t } from "../texts/texts";
import { Position } from "../wire/values";
import { TableBehind } from "./chart";
import { ListFrame } from "./list";
import { Live } from "./live";
import { FieldList, quoteOf } from "./parts";

const kHeight = 10; // of a bar, in units of its own

function Sides(props: { of: Exposure }) {
  const { longs, shorts } = props.of;
  return (
    <span class="sides">
      {longs > 0 ? (
        <span class="leg long">
          <i>{t("long")}</i> <span class="num">{whole(longs)}</span>
        </span>
      ) : null}{" "}
      {shorts > 0 ? (
        <span class="leg short">
          <i>{t("short")}</i> <span class="num">{whole(shorts)}</span>
        </span>
      ) : null}
    </span>
  );
}

// Long to the right and short to the left of one line, all to the same scale.
function Bars(props: { title: string; rows: Exposure[] }) {
  const { title, rows } = props;
  if (rows.length === 0) return null;
  const [left, right] = [Math.max(...rows.map((row) => row.shorts)), Math.max(...rows.map((row) => row.longs))];
  const unit = 100 / (left + right);
  const name = (row: Exposure) => row.name || t("others");
  return (
    <section class="card picture bars" aria-label={title}>
      <h3>{title}</h3>
      <ul class="plain">
        {rows.map((row) => (
          <li key={row.name}>
            <span class="line">
              <b class="code">{name(row)}</b>
              <Sides of={row} />
            </span>
            <svg
              viewBox={`${-left * unit} 0 100 ${kHeight}`}
              preserveAspectRatio="none"
              role="img"
              aria-label={`${name(row)}: ${t("long")} ${whole(row.longs)}, ${t("short")} ${whole(row.shorts)}`}
            >
              <rect class="of-long" x="0" width={String(row.longs * unit)} height={String(kHeight)} />
              <rect class="of-short" x={String(-row.shorts * unit)} width={String(row.shorts * unit)} height={String(kHeight)} />
              <path class="zero" d={`M0 0V${kHeight}`} />
            </svg>
          </li>
        ))}
      </ul>
      <TableBehind
        name={title}
        head={[title, t("net")]}
        rows={() => rows.map((row) => [name(row), <span class="num">{whole(row.longs - row.shorts)}</span>])}
      />
    </section>
  );
}

const follow = (row: Position): Position => store.prices.position(row);

function AllBars() {
  const positions = store.lists.positions.rows.map(follow);
  return (
    <div class="cards wide">
      <Bars title={t("byClass")} rows={exposures(positions, (row) => row.codeType)} />
      <Bars title={t("byPosition")} rows={exposures(positions, (row) => nameOf(row, quoteOf(row)))} />
    </div>
  );
}

// What is held in money, of all accounts: by position and by class, and the figures of each class.
export function Exposures() {
  const { rows } = store.lists.classes;
  const follows = store.lists.positions.rows.some((row) => follow(row) !== row);
  return (
    <ListFrame name="classes" title={t("exposure")} count={rows.length} followed={follows ? "barsFollow" : undefined}>
      <Live draw={() => <AllBars />} />
      <div class="cards">
        {rows.map((row) => (
          <article class="card" key={row.codeType}>
            <h3>{row.codeType}</h3>
            <FieldList fields={kClassFields} row={row} />
          </article>
        ))}
      </div>
    </ListFrame>
  );
}
