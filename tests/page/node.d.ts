// What these tests use of Node.js.
declare module "node:test" {
  export default function test(name: string, body: () => void | Promise<void>): void;
}
declare module "node:assert/strict" {
  interface Assert {
    (value: unknown, message?: string): void;
    equal(actual: unknown, expected: unknown, message?: string): void;
    deepEqual(actual: unknown, expected: unknown, message?: string): void;
    match(actual: string, expected: RegExp, message?: string): void;
  }
  const assert: Assert;
  export default assert;
}
declare module "node:fs" {
  export function readdirSync(folder: string): string[];
  export function readFileSync(file: string, encoding: "utf8"): string;
}
declare function setImmediate(action: () => void): void;
declare const process: { env: { [name: string]: string | undefined } };
