import { Period } from "../history";
import { Platform } from "../platform";

// What the user has chosen, kept on the device.
export interface Prefs {
  rise: "red" | "green"; // the colour of gains and purchases
  share: number; // of equity, in percent: an order that takes more needs a second tap
  notifies: boolean; // fills and alerts are shown by the system while the page is hidden
  vibrates: boolean; // on a fill or an alert
  period: Period; // of the history
}

const kDefaults: Prefs = { rise: "red", share: 25, notifies: false, vibrates: false, period: Period.Day };

export function readPrefs(platform: Platform): Prefs {
  try {
    return { ...kDefaults, ...(JSON.parse(platform.recall("prefs")) as Partial<Prefs>) };
  } catch {
    return kDefaults;
  }
}

export function writePrefs(platform: Platform, prefs: Prefs): void {
  platform.remember("prefs", JSON.stringify(prefs));
}
