import { Fill, kWorking, Order } from "./wire";

// `rows` with the pushed ones in the place of those with the same name, new ones at the end. A pushed row that
// `isOlder` than the one that is there is left out.
function merge<T>(rows: T[], pushed: T[], nameOf: (row: T) => string, isOlder: (row: T, there: T) => boolean): T[] {
  const merged = [...rows];
  const places = new Map(rows.map((row, place) => [nameOf(row), place]));
  for (const row of pushed) {
    const place = places.get(nameOf(row));
    if (place === undefined) {
      places.set(nameOf(row), merged.push(row) - 1);
    } else if (!isOlder(row, merged[place])) {
      merged[place] = row;
    }
  }
  return merged;
}

export const orderName = (order: Order): string => `${order.index}:${order.localOrderId}`;
export const fillName = (fill: Fill): string => `${fill.index}:${fill.fillId}`;

// A list may have told already how an order ended.
export function mergeOrders(rows: Order[], pushed: Order[]): Order[] {
  return merge(rows, pushed, orderName, (row, there) => row.status === kWorking && there.status !== kWorking);
}

export function mergeFills(rows: Fill[], pushed: Fill[]): Fill[] {
  return merge(rows, pushed, fillName, () => false);
}
