import { decimalsOf, fixed, moment, whole } from "./format";
import { currentLanguage, named, t } from "./texts/texts";
import { Holding, isSecurity } from "./ticket/ticket";
import { Alert, Fill, OfCode, Order, PriceType, Quote } from "./wire/values";

// Rows and orders in words. `quote` is that of the row's instrument, if it is known.

// "Buy to open". The side of a security's order says it all.
export function dealText(side: number, offset: number, quote: Quote | undefined): string {
  const effect = quote !== undefined && isSecurity(quote.codeClass) ? "" : named("offset", offset);
  const gap = currentLanguage() === "zh" || effect === "" ? "" : " ";
  return `${named("side", side)}${gap}${effect}`;
}

// "Close long 10", or "Close long 10/12" if not all of it can be closed. A line may break after the slash.
export function closingText(leg: "long" | "short", held: Holding): string {
  const [free, all] = leg === "long" ? [held.longFree, held.long] : [held.shortFree, held.short];
  const count = free === all ? whole(all) : `${whole(free)}/\u200b${whole(all)}`;
  return t(leg === "long" ? "closeLong" : "closeShort", count);
}

export function nameOf(row: OfCode, quote: Quote | undefined): string {
  return row.codeName || quote?.codeName || row.codeExch;
}

export function priceText(price: unknown, quote: Quote | undefined): string {
  return fixed(price, quote === undefined ? 2 : decimalsOf(quote.priceTick));
}

// Averages fall between the ticks.
export function averageText(price: unknown, quote: Quote | undefined): string {
  return fixed(price, Math.max(2, quote === undefined ? 2 : decimalsOf(quote.priceTick)));
}

interface Deal extends OfCode {
  side: number;
  combOffset: number;
  price: number;
  volume: number;
}

// "Buy to open 螺纹钢2701 2 @ 3,326"
export function orderText(order: Deal & { priceType?: number }, quote: Quote | undefined): string {
  const price = order.priceType === PriceType.Market ? t("market") : priceText(order.price, quote);
  const deal = dealText(order.side, order.combOffset, quote);
  return `${deal} ${nameOf(order, quote)} ${whole(order.volume)} @ ${price}`;
}

export function fillText(fill: Fill, quote: Quote | undefined): string {
  return `${orderText(fill, quote)} · ${fill.userCode}`;
}

export function rowText(order: Order, quote: Quote | undefined): string {
  return `${orderText(order, quote)} · ${order.userCode}`;
}

// "≥ 3,320"
export function conditionText(alert: Pick<Alert, "above" | "price">, quote: Quote | undefined): string {
  return `${alert.above ? "≥" : "≤"} ${priceText(alert.price, quote)}`;
}

// What has fired, and when.
export function firedText(alert: Alert, quote: Quote | undefined, now: number): string {
  const name = `${quote?.codeName ?? alert.hashCode} ${conditionText(alert, quote)}`;
  return t("alertNotice", name, priceText(alert.firedPrice, quote), moment(alert.fired, now));
}
