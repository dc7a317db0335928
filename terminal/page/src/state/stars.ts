import { Platform } from "../platform";

// The instruments that the user has starred, kept on the device.
export class Stars {
  private codes: ReadonlySet<number>;

  constructor(private readonly platform: Platform) {
    const kept = platform.recall("stars");
    this.codes = new Set(kept === "" ? [] : kept.split(",").map(Number));
  }

  has(hashCode: number): boolean {
    return this.codes.has(hashCode);
  }

  // Another set for each change.
  get all(): ReadonlySet<number> {
    return this.codes;
  }

  toggle(hashCode: number): void {
    const others = [...this.codes].filter((each) => each !== hashCode);
    this.set(others.length === this.codes.size ? [...others, hashCode] : others);
  }

  clear(): void {
    this.set([]);
  }

  private set(codes: number[]): void {
    this.codes = new Set(codes);
    this.platform.remember("stars", codes.join());
  }
}
