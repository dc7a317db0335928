// Browsers have workers over HTTPS and on the same machine only, and not while they do not trust the certificate. Without
// one the page works, but opens only while the terminal does.

// To be called once the page has loaded: a newer worker may replace the one that it was loaded by.
export async function startWorker(): Promise<void> {
  const registration = await navigator.serviceWorker.register("worker.js");
  const replace = () => registration.waiting?.postMessage("loaded");
  replace();
  registration.addEventListener("updatefound", () =>
    registration.installing?.addEventListener("statechange", replace),
  );
}
