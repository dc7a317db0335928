import { decimalsOf } from "../format";

// Numbers as they are typed.

// Full-width digits and signs, which Chinese keyboards type, as plain ones.
function plain(text: string): string {
  const narrow = (sign: string) => String.fromCharCode(sign.charCodeAt(0) - 0xfee0);
  return text.replace(/[\uff0b-\uff19]/g, narrow).replace(/。/g, ".").trim();
}

// The number that `text` is, with or without separators of thousands: "3,390" is 3390. NaN if it is none.
export function readNumber(text: string): number {
  const typed = plain(text);
  const isNumber = /^\d+(\.\d+)?$/.test(typed) || /^\d{1,3}(,\d{3})+(\.\d+)?$/.test(typed);
  return isNumber ? Number(typed.replace(/,/g, "")) : NaN;
}

export function isCount(text: string, least: number, most: number): boolean {
  const value = readNumber(text);
  return Number.isInteger(value) && value >= least && value <= most;
}

// `text` moved by `steps` of `step`, onto the grid, kept from `low` to `high`. Anything but a number counts as `low`.
export function moved(text: string, steps: number, step: number, low: number, high: number): string {
  const value = readNumber(text);
  const from = Number.isNaN(value) ? low : value;
  const to = Math.round(from / step + steps) * step;
  return Math.min(high, Math.max(low, to)).toFixed(decimalsOf(step));
}

export function isOnGrid(price: number, tick: number): boolean {
  const ticks = price / tick;
  return Math.abs(ticks - Math.round(ticks)) < 1e-6;
}
