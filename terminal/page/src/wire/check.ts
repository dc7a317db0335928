// Whether a value that arrived is what the contract says.
//   "int"     a whole number with all its digits: of a larger one, reading has already lost some
//   "=a|b"    one of these texts
//   "name?"   a member that may be missing
// Members that a shape does not name are allowed: a newer terminal may add some.
export type Shape = string | readonly [Shape] | { readonly [member: string]: Shape };

const kPlain: { [name: string]: (value: unknown) => boolean } = {
  any: (value) => value !== undefined,
  null: (value) => value === null,
  text: (value) => typeof value === "string",
  flag: (value) => typeof value === "boolean",
  number: (value) => typeof value === "number",
  int: (value) => Number.isSafeInteger(value),
};

// The path to what differs from `shape`, such as "[3].price"; "." for the value itself, empty if all of it fits.
export function misfit(value: unknown, shape: Shape): string {
  if (typeof shape === "string") return fits(value, shape) ? "" : ".";
  return Array.isArray(shape) ? rowMisfit(value, shape[0]) : memberMisfit(value, shape as Members);
}

interface Members {
  readonly [member: string]: Shape;
}

function fits(value: unknown, shape: string): boolean {
  return shape[0] === "=" ? shape.slice(1).split("|").includes(value as string) : kPlain[shape](value);
}

function rowMisfit(value: unknown, shape: Shape): string {
  if (!Array.isArray(value)) return ".";
  for (let place = 0; place < value.length; ++place) {
    const wrong = misfit(value[place], shape);
    if (wrong !== "") return `[${place}]${wrong === "." ? "" : wrong}`;
  }
  return "";
}

function memberMisfit(value: unknown, members: Members): string {
  if (typeof value !== "object" || value === null) return ".";
  for (const name in members) {
    const key = name.endsWith("?") ? name.slice(0, -1) : name;
    const member = (value as { [key: string]: unknown })[key];
    if (key !== name && member === undefined) continue;
    const wrong = misfit(member, members[name]);
    if (wrong !== "") return `.${key}${wrong === "." ? "" : wrong}`;
  }
  return "";
}
