// Keeps the page's files, so that it opens without the terminal, and shows notifications, which phones let only a worker
// do. The files of a page always have one version: a worker takes all of its own when it
// is installed, and answers with these alone until the next worker takes its place.
const kShell = { __SHELL__ }; // the start of each file's ETag, written by embed.cmake
const kCache = `shell-${Object.values(kShell).join("-")}`;

// A terminal that is replaced meanwhile has other files, which must not be mixed with these. What the browser has just
// loaded will do.
async function takeFile(path, hash) {
  for (const cache of ["force-cache", "reload"]) {
    const answer = await fetch(path, { cache });
    if (answer.ok && answer.headers.get("ETag")?.startsWith(`"${hash}`)) return answer;
  }
  throw new Error(`${path} belongs to another version`);
}

async function install() {
  const cache = await caches.open(kCache);
  await Promise.all(
    Object.entries(kShell).map(async ([path, hash]) => cache.put(path, await takeFile(path, hash))),
  );
}

async function removeOthers() {
  const names = await caches.keys();
  await Promise.all(names.map((name) => name !== kCache && caches.delete(name)));
}

async function answer(request, path) {
  const kept = await caches.match(path, { cacheName: kCache, ignoreVary: true });
  return kept ?? fetch(request);
}

// A page that has loaded keeps what it has; another one may be in the middle of loading.
async function replaceOld() {
  const pages = await clients.matchAll({ type: "window", includeUncontrolled: true });
  if (pages.length === 1) await skipWaiting();
}

// A tap on a notification leads to its fill or its instrument.
async function follow(address) {
  const [page] = await clients.matchAll({ type: "window", includeUncontrolled: true });
  if (page === undefined) return clients.openWindow(`/${address}`);
  page.postMessage(address);
  return page.focus();
}

addEventListener("install", (event) => event.waitUntil(install()));
addEventListener("activate", (event) => event.waitUntil(removeOthers()));
addEventListener("fetch", (event) => {
  const { origin, pathname } = new URL(event.request.url);
  const isFile = origin === location.origin && Object.hasOwn(kShell, pathname);
  if (isFile && event.request.method === "GET") event.respondWith(answer(event.request, pathname));
});
addEventListener("message", (event) => event.waitUntil(replaceOld())); // a page says that it has loaded
addEventListener("notificationclick", (event) => {
  event.notification.close();
  event.waitUntil(follow(event.notification.data));
});
