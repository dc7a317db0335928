import "./styles/base.css";
import { h, render } from "preact";
import { nav, store } from "./app";
import { watchWidth } from "./layout";
import { takeTokenFromLink } from "./platform";
import { currentLanguage, useLanguage } from "./texts/texts";
import { App } from "./views/app";
import { loadRest } from "./views/later";
import { listenToNotices } from "./views/systemnotices";
import { startWorker } from "./worker";

const kTickMs = 500;

function onAddress(): void {
  const token = takeTokenFromLink();
  if (token !== "") store.logIn(token);
  if (location.hash === "#content") return; // the link that skips the navigation
  nav.read();
}

function comeAndGo(): void {
  if (!store.platform.isSeen()) return store.keep();
  store.connection.wake();
  store.tick();
}

const language = store.platform.recall("language");
useLanguage((language || navigator.language).startsWith("zh") ? "zh" : "en");
nav.read();
document.documentElement.lang = currentLanguage() === "zh" ? "zh-CN" : "en";
watchWidth(() => store.update());
render(<App />, document.body);
if (store.token !== "") store.logIn(store.token);
addEventListener("popstate", onAddress);
addEventListener("hashchange", onAddress);
addEventListener("online", comeAndGo);
addEventListener("offline", () => store.connection.lose());
addEventListener("scroll", () => store.asker.scrolled(), { passive: true });
document.addEventListener("visibilitychange", comeAndGo);
listenToNotices();
addEventListener("load", () => {
  void startWorker().catch(() => undefined); // see there
  void loadRest();
});
setInterval(() => store.tick(), kTickMs);
