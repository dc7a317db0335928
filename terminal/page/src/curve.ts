// The geometry of curves. A curve is drawn in a box of fixed units, which the style sheet stretches.

export interface Point {
  time: number;
  value: number;
}

export const kBox = { width: 1000, height: 300 };

export interface Scale {
  x: (time: number) => number;
  y: (value: number) => number;
  low: number;
  high: number;
}

// `also` is a value that must be in sight. A curve without any movement is in the middle.
export function scaleOf(points: readonly Point[], also: number): Scale {
  let [low, high] = [also, also];
  for (const { value } of points) {
    if (value < low) low = value;
    if (value > high) high = value;
  }
  const [from, to] = [points[0].time, points[points.length - 1].time];
  const spread = high - low || 1;
  return {
    x: (time) => (kBox.width * (time - from)) / (to - from || 1),
    y: (value) => (high === low ? kBox.height / 2 : (kBox.height * (high - value)) / spread),
    low,
    high,
  };
}

export function pathOf(points: readonly Point[], { x, y }: Scale): string {
  if (points[0].time === points[points.length - 1].time) return `M0 ${y(points[points.length - 1].value)}H${kBox.width}`;
  return points.map(({ time, value }, place) => `${place === 0 ? "M" : "L"}${x(time).toFixed(1)} ${y(value).toFixed(1)}`).join("");
}

// The point nearest to a share of the time, from 0 to 1.
export function nearest(points: readonly Point[], share: number): number {
  const [from, to] = [points[0].time, points[points.length - 1].time];
  const time = from + share * (to - from);
  let [low, high] = [0, points.length - 1];
  while (high - low > 1) {
    const middle = (low + high) >> 1;
    if (points[middle].time > time) high = middle;
    else low = middle;
  }
  return time - points[low].time < points[high].time - time ? low : high;
}
