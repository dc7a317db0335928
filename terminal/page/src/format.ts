// Numbers, times and ages as texts. What is missing or no number is a dash.

const kDash = "–";
const kMinus = "−"; // as wide as the plus sign
const formats = new Map<number, Intl.NumberFormat>();

function format(decimals: number): Intl.NumberFormat {
  let found = formats.get(decimals);
  if (found === undefined) {
    found = new Intl.NumberFormat("en-US", { minimumFractionDigits: decimals, maximumFractionDigits: decimals });
    formats.set(decimals, found);
  }
  return found;
}

export function fixed(value: unknown, decimals: number): string {
  if (typeof value !== "number" || !Number.isFinite(value)) return kDash;
  const text = format(decimals).format(Math.abs(value));
  return value < 0 && /[1-9]/.test(text) ? kMinus + text : text;
}

export function signed(value: unknown, decimals: number): string {
  const text = fixed(value, decimals);
  return typeof value === "number" && value > 0 && /[1-9]/.test(text) ? `+${text}` : text;
}

export const money = (value: unknown): string => fixed(value, 2);
export const whole = (value: unknown): string => fixed(value, 0);

export function percent(value: unknown, withSign = false): string {
  if (typeof value !== "number" || !Number.isFinite(value)) return kDash;
  return `${withSign ? signed(value * 100, 2) : fixed(value * 100, 2)}%`;
}

// How many decimals a price of this tick has: 2 of 0.02, 3 of 0.005.
export function decimalsOf(tick: number): number {
  const text = tick.toFixed(8).replace(/0+$/, "");
  return text.length - text.indexOf(".") - 1;
}

export function timeOfDay(milliseconds: number): string {
  const time = new Date(milliseconds);
  return `${two(time.getHours())}:${two(time.getMinutes())}:${two(time.getSeconds())}`;
}

// The time of day, with the date if that is another day.
export function moment(milliseconds: number, now: number): string {
  const [day, today] = [new Date(milliseconds), new Date(now)];
  const time = timeOfDay(milliseconds);
  return day.toDateString() === today.toDateString() ? time : `${day.getMonth() + 1}/${day.getDate()} ${time}`;
}

const two = (value: number): string => String(value).padStart(2, "0");

export function timeOfMinute(milliseconds: number): string {
  return timeOfDay(milliseconds).slice(0, 5);
}

export function dateOf(milliseconds: number): string {
  const date = new Date(milliseconds);
  return `${date.getFullYear()}-${two(date.getMonth() + 1)}-${two(date.getDate())}`;
}

// Seconds, then minutes, then hours, as a number and a unit.
export function age(milliseconds: number): [number, "s" | "min" | "h"] {
  const seconds = Math.max(0, Math.floor(milliseconds / 1000));
  if (seconds < 60) return [seconds, "s"];
  return seconds < 3600 ? [Math.floor(seconds / 60), "min"] : [Math.floor(seconds / 3600), "h"];
}
