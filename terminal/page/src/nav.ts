import { addressOf, Place, readAddress, Route } from "./route";
import { Store } from "./state/store";

// The address and the browser's history. Each dialog is a separate entry, so that the back gesture closes it. An
// entry knows which dialogs are open below it.
export class Nav {
  private route: Route = "assets";
  private sheets: string[] = []; // the last is on top

  constructor(private readonly store: Store) {}

  // To be called at the start and whenever the address or the history's entry has changed.
  read(): void {
    const { route, sheet } = readAddress(location.hash);
    this.route = route;
    this.sheets = (history.state as { sheets?: string[] } | null)?.sheets ?? [];
    if (sheet === "" || this.sheets.length > 0) return this.show();
    history.replaceState(null, "", addressOf(route, "")); // so that "back" closes what the address opens
    this.open(sheet);
  }

  open(sheet: string, route = this.route): void {
    this.sheets = route === this.route ? [...this.sheets, sheet] : [sheet];
    this.route = route;
    history.pushState({ sheets: this.sheets }, "", addressOf(route, sheet));
    this.show();
  }

  // Closes the dialog on top, or so many.
  close(count = 1): void {
    const steps = Math.min(count, this.sheets.length);
    if (steps === 0) return;
    this.sheets = this.sheets.slice(0, -steps);
    history.go(-steps);
    this.show();
  }

  // From the confirmation back to the ticket, also if the confirmation was opened without it.
  edit(): void {
    if (this.sheets[this.sheets.length - 2] === "trade") return this.close();
    this.sheets = [...this.sheets.slice(0, -1), "trade"];
    history.replaceState({ sheets: this.sheets }, "", addressOf(this.route, "trade"));
    this.show();
  }

  closeAll(): void {
    this.close(this.sheets.length);
  }

  // To a view, or to a dialog over it.
  follow(address: string): void {
    const { route, sheet } = readAddress(address);
    if (sheet === "") this.go(route);
    else this.open(sheet, route);
  }

  go(route: Route): void {
    location.hash = addressOf(route, "");
  }

  private show(): void {
    const place: Place = { route: this.route, sheet: this.sheets[this.sheets.length - 1] ?? "" };
    this.store.show(place);
  }
}

// The part of a dialog's name behind "kind=", if it is of that kind: "row=1:42" is the row "1:42".
export function sheetArgument(sheet: string, kind: string): string | null {
  return sheet.startsWith(`${kind}=`) ? sheet.slice(kind.length + 1) : null;
}
