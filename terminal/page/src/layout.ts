// The one place of breakpoints and row heights. Style sheets use .wide-screen and .desk; rows set their own height.

export type Width = "phone" | "tablet" | "desk";

const kTablet = matchMedia("(min-width: 50em)"); // the navigation moves to the side
const kDesk = matchMedia("(min-width: 62.5em)"); // lists become tables

export function width(): Width {
  if (kDesk.matches) return "desk";
  return kTablet.matches ? "tablet" : "phone";
}

// In rem; a row whose text needs more takes it.
export const kRowHeights = { pair: 3.5, triple: 4.75, table: 2.75 };

export function watchWidth(changed: () => void): void {
  const apply = () => {
    document.documentElement.classList.toggle("wide-screen", width() !== "phone");
    document.documentElement.classList.toggle("desk", width() === "desk");
    changed();
  };
  for (const query of [kTablet, kDesk]) query.addEventListener("change", apply);
  apply();
}
