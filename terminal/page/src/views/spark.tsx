import { h } from "preact";
import { store } from "../app";
import { kBox, pathOf, Point, scaleOf } from "../curve";
import { priceText } from "../describe";
import { timeOfMinute } from "../format";
import { t } from "../texts/texts";
import { Position, Quote, QuoteCurve } from "../wire/values";
import { Curve, TableBehind } from "./chart";
import { Gain, quoteOf, toneOf } from "./parts";

const kMinuteMs = 60_000;
const kEdge = 20; // above and below, for the width of the line

// The prices of the day up to the one that the row shows.
function pointsOf(curve: QuoteCurve, last: number): Point[] {
  const points = curve.prices.map((value, place) => ({ time: curve.start + curve.minutes[place] * kMinuteMs, value }));
  const end = points[points.length - 1];
  if (end === undefined || end.value === last) return points;
  return [...points, { time: Math.max(end.time, store.platform.now()), value: last }];
}

const curveOf = (row: { hashCode: number }): QuoteCurve | undefined =>
  store.lists.curves.rows.find((each) => each.hashCode === row.hashCode);

const valuesText = (points: readonly Point[], { low, high }: { low: number; high: number }, quote: Quote | undefined) =>
  t("dayOf", ...[points[0].value, low, high, points[points.length - 1].value].map((each) => priceText(each, quote)));

// The day's curve of an instrument, against its last settlement.
export function Spark(props: { hashCode: number; last: number; base: number }) {
  const { last, base } = props;
  const curve = curveOf(props);
  const points = curve === undefined ? [] : pointsOf(curve, last);
  if (points.length === 0) return null;
  const scale = scaleOf(points, base);
  return (
    <span class={`spark ${toneOf(last - base)}`}>
      <svg
        viewBox={`0 ${-kEdge} ${kBox.width} ${kBox.height + 2 * kEdge}`}
        preserveAspectRatio="none"
        role="img"
        aria-label={valuesText(points, scale, quoteOf(props))}
      >
        <path class="base" d={`M0 ${scale.y(base)}H${kBox.width}`} />
        <path class="line-of" d={pathOf(points, scale)} />
      </svg>
    </span>
  );
}

// The same, large, with its table.
export function DayCurve(props: { row: Position }) {
  const { row } = props;
  const curve = curveOf(row);
  const points = curve === undefined ? [] : pointsOf(curve, row.currentPrice);
  if (points.length === 0) return null;
  const quote = quoteOf(row);
  const base = row.preSettlementPrice;
  const text = (value: number) => priceText(value, quote);
  return (
    <div class="picture">
      <Curve
        points={points}
        base={base}
        gain={row.currentPrice - base}
        label={valuesText(points, scaleOf(points, base), quote)}
        valueText={text}
        timeText={timeOfMinute}
        head={(at) => (
          <p class="line">
            <span>
              <b class="num">{text(points[at].value)}</b> <Gain value={points[at].value - base} />
            </span>
            <small class="num">{timeOfMinute(points[at].time)}</small>
          </p>
        )}
      />
      <TableBehind
        name={t("dayCurve")}
        head={[t("time"), t("price")]}
        rows={() => points.map((each) => [timeOfMinute(each.time), <span class="num">{text(each.value)}</span>])}
      />
    </div>
  );
}
