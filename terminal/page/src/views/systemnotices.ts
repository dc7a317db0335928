import { store } from "../app";
import { t } from "../texts/texts";

// Fills shown by the system while the page is hidden. Only secure pages may, and some phones do not let a page at all.

export async function allowSystemNotices(): Promise<boolean> {
  if (!("Notification" in window) || !isSecureContext) return false;
  return (await Notification.requestPermission()) === "granted";
}

export function showFill(text: string): void {
  try {
    const shown = new Notification(t("fillNotice", text), { icon: "icon.svg" });
    shown.onclick = () => {
      window.focus();
      shown.close();
    };
  } catch {
    store.prefer({ notifies: false }); // the badge and the notice in the page are left
  }
}
