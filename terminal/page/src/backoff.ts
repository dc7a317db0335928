const kFirstMs = 500;
const kLastMs = 30_000;

// Milliseconds to wait before the next attempt: doubled each time, with jitter over the upper half, so that clients
// which lost the terminal together do not reconnect together. `random` is in [0, 1).
export function backoff(attempt: number, random: number): number {
  const whole = Math.min(kLastMs, kFirstMs * 2 ** attempt);
  return whole / 2 + (whole / 2) * random;
}
