import { nav, store } from "../app";
import { t } from "../texts/texts";

// Fills and price alerts shown by the system while the page is hidden. Only secure pages may, and on phones only through
// a worker.

export async function allowSystemNotices(): Promise<boolean> {
  if (!("Notification" in window) || !isSecureContext) return false;
  return (await Notification.requestPermission()) === "granted";
}

export function listenToNotices(): void {
  navigator.serviceWorker?.addEventListener("message", (event) => nav.follow(String(event.data)));
}

// A browser that does not trust the certificate takes no worker. It may show the notice by itself.
async function show(title: string, address: string): Promise<void> {
  const vibrate = store.prefs.vibrates ? [200] : [];
  const options = { icon: "icon-192.png", vibrate, data: address };
  try {
    await navigator.serviceWorker.register("worker.js");
    const worker = await navigator.serviceWorker.ready;
    await worker.showNotification(title, options);
  } catch {
    const shown = new Notification(title, options);
    shown.onclick = () => {
      window.focus();
      shown.close();
      nav.follow(address);
    };
  }
}

export function showNotice(title: string, address: string): void {
  show(title, address).catch(() => {
    store.prefer({ notifies: false });
    store.tell(t("notifyDenied"), true);
  });
}
