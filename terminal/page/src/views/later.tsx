import { h } from "preact";
import { store } from "../app";
import { t } from "../texts/texts";

type Rest = typeof import("./rest");

const kAgainMs = 10_000;

let rest: Rest | null = null;
let isLoading = false;
let againAt = 0;

// To be called when the page has time. A terminal that was replaced meanwhile no longer has the file.
export async function loadRest(): Promise<void> {
  const now = store.platform.clock();
  if (rest !== null || isLoading || now < againAt) return;
  isLoading = true;
  againAt = now + kAgainMs;
  try {
    rest = await import("./rest");
    store.update();
  } catch {
    store.tell(t("notLoadedView"), true);
  }
  isLoading = false;
}

// A view of the rest.
export function Later(props: { view: keyof Rest }) {
  if (rest !== null) return h(rest[props.view] as () => JSX.Element, {});
  void loadRest();
  return <p class="empty">{t("loading")}</p>;
}
