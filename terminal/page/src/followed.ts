import { Capital, Position } from "./wire/values";

// Figures of a list at later prices, for display until the next list. Market values and profits are linear in the price.

// A share of something that does not move, of which `after` is now what `before` was. Unknown if that was nothing.
const shareAt = (share: number, before: number, after: number): number => (share * after) / before;

// Margin, leverage and shares of the class stay as the list has them.
export function positionAt(row: Position, price: number, multiplier: number): Position {
  const step = (price - row.currentPrice) * multiplier;
  const [long, short] = [step * row.longPosition, step * row.shortPosition];
  const longMarketValue = row.longMarketValue + long;
  const shortMarketValue = row.shortMarketValue + short;
  const todayPorfit = row.todayPorfit + long - short;
  return {
    ...row,
    currentPrice: price,
    longMarketValue,
    shortMarketValue,
    totalMarketValue: longMarketValue + shortMarketValue,
    netMarketValue: Math.abs(longMarketValue - shortMarketValue),
    longFloatPorfit: row.longFloatPorfit + long,
    shortFloatPorfit: row.shortFloatPorfit - short,
    floatPorfit: row.floatPorfit + long - short,
    todayPorfit,
    todayProfitRatio: shareAt(row.todayProfitRatio, row.todayPorfit, todayPorfit),
    todayProfitAccRatio: shareAt(row.todayProfitAccRatio, row.todayPorfit, todayPorfit),
  };
}

// Available funds, margin and risk stay as the list has them.
export function capitalAfter(row: Capital, gain: number): Capital {
  const preCloseProfit = row.preCloseProfit + gain;
  return {
    ...row,
    dynamicAmount: row.dynamicAmount + gain,
    lastAmount: row.lastAmount + gain,
    todayFloatingProfit: row.todayFloatingProfit + gain,
    preCloseProfit,
    profitRatio: shareAt(row.profitRatio, row.preCloseProfit, preCloseProfit),
  };
}
