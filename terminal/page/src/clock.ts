let at = Date.now();
let wall = at;
let ticks = performance.now();

// Milliseconds that only ever grow. The device's clock may be set back, which would make what is old look fresh and put
// off every question; the browser's own clock may stand still while the device sleeps.
export function clock(): number {
  const [wallNow, ticksNow] = [Date.now(), performance.now()];
  at += Math.max(0, wallNow - wall, ticksNow - ticks);
  [wall, ticks] = [wallNow, ticksNow];
  return at;
}
