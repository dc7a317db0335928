import { Fill, Order, Status } from "../wire/values";

// `rows` with the pushed ones in place of those with the same name, new ones at the end. A pushed row that `isOlder`
// than the one in the list is skipped.
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

// The list may have shown already how an order ended.
export function mergeOrders(rows: Order[], pushed: Order[]): Order[] {
  const isOver = (order: Order) => order.status !== Status.Working;
  return merge(rows, pushed, orderName, (row, there) => !isOver(row) && isOver(there));
}

export function mergeFills(rows: Fill[], pushed: Fill[]): Fill[] {
  return merge(rows, pushed, fillName, () => false);
}
