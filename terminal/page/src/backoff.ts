const kFirstMs = 500;
const kLastMs = 30_000;

// How long to wait before the next attempt, in milliseconds: doubled each time, and spread over the upper half so that
// phones that lost the terminal together do not come back together. `random` lies in [0, 1).
export function backoff(attempt: number, random: number): number {
  const whole = Math.min(kLastMs, kFirstMs * 2 ** attempt);
  return whole / 2 + (whole / 2) * random;
}
