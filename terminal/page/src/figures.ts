import { Capital } from "./wire/values";

// Today's profit of an account: floating and closed, against the last settlement, before commission. It is the sum of
// the positions' own, of those that were closed whole too.
export function profitToday(capital: Capital): number {
  return capital.todayFloatingProfit + capital.closeProfit;
}

// The capital that today's profit is measured against.
export function startMoney(capital: Capital): number {
  return capital.preBalance + capital.deposit;
}

export function returnToday(capital: Capital): number {
  const money = startMoney(capital);
  return money > 0 ? profitToday(capital) / money : 0;
}

export function sumOf<Row>(rows: readonly Row[], figure: (row: Row) => number): number {
  return rows.reduce((sum, row) => sum + figure(row), 0);
}
