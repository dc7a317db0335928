import { EquityPoint } from "./wire/values";

// The history of an account's equity: which points are asked for, and what is read out of them.

export enum Period {
  Day,
  Week,
  Month,
  Year,
}

export const kPeriods = [Period.Day, Period.Week, Period.Month, Period.Year];

const kDayMs = 86_400_000;
const kDays = [1.5, 7, 30, 366]; // the trading day may have begun at another midnight than the device's

// The device's clock may be behind the terminal's.
export function rangeOf(period: Period, now: number): { from: number; to: number } {
  return { from: Math.round(now - kDays[period] * kDayMs), to: Math.round(now + kDayMs) };
}

// A day is the trading day of the last point.
export function pointsOf(rows: readonly EquityPoint[], period: Period): readonly EquityPoint[] {
  const last = rows[rows.length - 1];
  return period === Period.Day ? rows.filter((row) => row.day === last.day) : rows;
}

// What was earned from the first point to `row`: payments are no gain.
export function earned(points: readonly EquityPoint[], row: EquityPoint): number {
  const [first] = points;
  return row.equity - first.equity - (row.deposit - first.deposit) + (row.withdraw - first.withdraw);
}

export interface Payment {
  time: number;
  amount: number; // negative: paid out
}

export function paymentsOf(points: readonly EquityPoint[]): Payment[] {
  const found: Payment[] = [];
  for (let place = 1; place < points.length; ++place) {
    const [before, row] = [points[place - 1], points[place]];
    const amounts = [row.deposit - before.deposit, before.withdraw - row.withdraw];
    for (const amount of amounts) if (amount !== 0) found.push({ time: row.time, amount });
  }
  return found;
}

const kSteps = [3_600_000, kDayMs, kDayMs, 30 * kDayMs]; // of the table of each period

// The last point of each hour, day or thirty days: what a table can hold. Of days, by the terminal's own.
export function tableOf(points: readonly EquityPoint[], period: Period): EquityPoint[] {
  const step = kSteps[period];
  const stepOf = (row: EquityPoint) => Math.floor((step < kDayMs ? row.time : row.day * kDayMs) / step);
  return points.filter((row, place) => place === points.length - 1 || stepOf(points[place + 1]) !== stepOf(row));
}
