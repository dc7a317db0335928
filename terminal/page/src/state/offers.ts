import { Bodies, SyncOrder } from "../wire/values";

// The synchronising orders that the terminal offers, each with its own name. A large order comes in parts that are
// alike, and are numbered. The price is not part of the name: it follows the market, and a picked order stays picked.
export interface Offer extends SyncOrder {
  name: string;
}

export const kMostAtOnce = 1000; // that the terminal takes in one request

export function namedOffers(rows: readonly SyncOrder[]): Offer[] {
  const counts = new Map<string, number>();
  return rows.map((row) => {
    const like = `${row.index}:${row.hashCode}:${row.side}:${row.combOffsetFlag}:${row.volume}`;
    const place = (counts.get(like) ?? 0) + 1;
    counts.set(like, place);
    return { ...row, name: `${like}#${place}` };
  });
}

// Whether each of `offers` is still offered.
export function areOffered(offers: readonly Offer[], now: readonly Offer[]): boolean {
  const names = new Set(now.map((offer) => offer.name));
  return offers.every((offer) => names.has(offer.name));
}

// What is sent: these offers and no other, as they were shown.
export function bodyOf(offers: readonly Offer[]): Bodies["monitor.sync.order.new"] {
  return offers.map(({ index, hashCode, volume, price, side, combOffsetFlag }) => {
    return { index, hashCode, volume, price, side, combOffsetFlag };
  });
}
