import "./pictures.css";
import { h } from "preact";
import { store } from "../app";
import { scaleOf } from "../curve";
import { dateOf, money, percent, signed, timeOfMinute } from "../format";
import { earned, kPeriods, paymentsOf, Period, pointsOf, tableOf } from "../history";
import { fieldName, kCapitalFields } from "../texts/fields";
import { t } from "../texts/texts";
import { EquityPoint } from "../wire/values";
import { Curve, TableBehind } from "./chart";
import { Choices, Pick } from "./controls";
import { ListFrame } from "./list";
import { Gain } from "./parts";

const kNames = ["period0", "period1", "period2", "period3"] as const;
const kMostPayments = 5; // below the curve; the table has them all

// Longer periods are too coarse for the hour of a payment, and for any in a year.
const dayText = (time: number, period: Period): string => (period === Period.Day ? timeOfMinute(time) : dateOf(time));

const timeText = (time: number, period: Period): string =>
  period === Period.Week || period === Period.Month ? `${dateOf(time)} ${timeOfMinute(time)}` : dayText(time, period);

function Payments(props: { points: readonly EquityPoint[]; period: Period }) {
  const all = paymentsOf(props.points);
  if (all.length === 0) return null;
  return (
    <ul class="plain payments">
      {all.slice(-kMostPayments).map((each) => (
        <li class={each.amount > 0 ? "paid in" : "paid out"}>
          <span>
            {t(each.amount > 0 ? "paidIn" : "paidOut")} <small class="num">{dayText(each.time, props.period)}</small>
          </span>
          <span class="num">{signed(each.amount, 2)}</span>
        </li>
      ))}
    </ul>
  );
}

function Head(props: { points: readonly EquityPoint[]; at: number; period: Period }) {
  const { points, at } = props;
  const gain = earned(points, points[at]);
  const start = points[0].equity;
  return (
    <p class="line head">
      <span class="equity num">{money(points[at].equity)}</span>
      <span>
        <Gain value={gain} class="strong" />{" "}
        {start > 0 ? <Gain value={gain} text={percent(gain / start, true)} /> : null}{" "}
        <small class="num">{timeText(points[at].time, props.period)}</small>
      </span>
    </p>
  );
}

function rowsOf(points: readonly EquityPoint[], period: Period): unknown[][] {
  let before = points[0];
  return tableOf(points, period).map((row) => {
    const paid = row.deposit - before.deposit - row.withdraw + before.withdraw;
    before = row;
    return [
      <span class="num">{dayText(row.time, period)}</span>,
      <span>
        <span class="num">{money(row.equity)}</span>
        {paid === 0 ? null : (
          <small>
            {" "}
            {t(paid > 0 ? "paidIn" : "paidOut")} <span class="num">{signed(paid, 2)}</span>
          </small>
        )}
      </span>,
    ];
  });
}

function EquityCurve(props: { rows: readonly EquityPoint[]; period: Period }) {
  const { period } = props;
  const points = pointsOf(props.rows, period);
  const curve = points.map(({ time, equity }) => ({ time, value: equity }));
  const { low, high } = scaleOf(curve, curve[0].value);
  const last = points[points.length - 1];
  const figures = [points[0].equity, last.equity, low, high].map(money);
  return (
    <div class="card picture">
      <Curve
        points={curve}
        base={points[0].equity}
        gain={earned(points, last)}
        marks={paymentsOf(points)}
        label={`${t(kNames[period])}: ${t("equityOf", ...figures)}`}
        valueText={money}
        timeText={(time) => timeText(time, period)}
        head={(at) => <Head points={points} at={at} period={period} />}
      />
      <Payments points={points} period={period} />
      <TableBehind name={t("equity")} head={[t("time"), fieldName(kCapitalFields[0])]} rows={() => rowsOf(points, period)} />
    </div>
  );
}

// How an account's equity came about: the day, or the time before.
export function Equity() {
  const { rows } = store.lists.equity;
  const { period } = store.prefs;
  const accounts = store.lists.accounts.rows.map((account) => [account.index, account.userCode] as const);
  const account = (
    <Pick
      label={t("account")}
      value={store.account || (accounts[0]?.[0] ?? 0)}
      options={accounts}
      onPick={(index) => store.pickAccount(Number(index))}
    />
  );
  return (
    <ListFrame name="equity" title={t("equity")} count={rows.length} isPicture empty={t("noHistory")} tools={account}>
      <div class="periods">
        <Choices
          name="period"
          label={t("period")}
          value={period}
          values={kPeriods}
          text={(value) => t(kNames[value])}
          onPick={(value) => store.prefer({ period: value })}
        />
      </div>
      {rows.length === 0 ? null : <EquityCurve rows={rows} period={period} />}
    </ListFrame>
  );
}
