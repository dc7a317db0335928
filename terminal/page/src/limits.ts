import { Capital, CreditFigures, Market } from "./wire/values";

// How much of a limit an account has used up.

export const kNear = 0.8;
export const kAtLimit = 0.95;

export interface Use {
  share: number; // 1: the limit is reached
  floor: number; // of a maintenance ratio; 0: the limit is all of the equity
}

// Securities are paid in full, so nothing limits the share that is invested. Undefined: no limit, or not known.
export function useOf(capital: Capital, market: number, credit: CreditFigures | undefined): Use | undefined {
  if (market === Market.Futures || market === Market.Options) return { share: capital.risk, floor: 0 };
  if (market !== Market.Credit || credit === undefined) return undefined;
  const { marginRatio, keepMarginRatio } = credit;
  return { share: marginRatio > 0 ? keepMarginRatio / marginRatio : 0, floor: keepMarginRatio };
}

export function toneOfUse(share: number): "" | "near" | "full" {
  return share >= kAtLimit ? "full" : share >= kNear ? "near" : "";
}
