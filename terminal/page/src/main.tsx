import "../app.css";
import { h, render } from "preact";
import { recall, takeTokenFromLink } from "./device";
import { readRoute } from "./route";
import { store } from "./store";
import { useLanguage } from "./texts";
import { App } from "./views/app";

const kTickMs = 1000;

function isSeen(): boolean {
  return document.visibilityState === "visible";
}

// A link with a token, or the address of a view.
function readAddress(): void {
  const token = takeTokenFromLink();
  if (token !== "") return store.logIn(token);
  if (location.hash === "#content") return; // the link that skips the navigation
  store.go(readRoute(location.hash));
  scrollTo(0, 0);
}

function comeBack(): void {
  if (!isSeen()) return;
  store.connection.wake();
  store.tick();
}

const isChinese = recall("language") === "" ? navigator.language.startsWith("zh") : recall("language") === "zh";
useLanguage(isChinese ? "zh" : "en");
const linkToken = takeTokenFromLink();
render(<App />, document.body);
if (linkToken !== "" || store.token !== "") store.logIn(linkToken || store.token);
addEventListener("hashchange", readAddress);
addEventListener("online", comeBack);
document.addEventListener("visibilitychange", comeBack);
setInterval(() => isSeen() && store.tick(), kTickMs);
