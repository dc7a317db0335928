import { kFrameTexts } from "./frame";
import { kListTexts } from "./lists";
import { kTradingTexts } from "./trading";

// Every text of the page itself, in the language that the user has chosen.

export type Language = "zh" | "en";

const kTexts = { ...kFrameTexts, ...kListTexts, ...kTradingTexts };

export type TextName = keyof typeof kTexts;

let language: Language = "zh";

export function currentLanguage(): Language {
  return language;
}

export function useLanguage(wanted: Language): void {
  language = wanted;
}

export function t(name: TextName, ...values: (string | number)[]): string {
  const text: string = kTexts[name][language === "zh" ? 0 : 1];
  return text.replace(/\{(\d)\}/g, (_, place: string) => String(values[Number(place)]));
}

// Of a number on the wire: "status2". One without a name is shown as it is.
export function named(group: "side" | "offset" | "status" | "only" | "market" | "part", value: number): string {
  const name = `${group}${value}`;
  return name in kTexts ? t(name as TextName) : String(value);
}
