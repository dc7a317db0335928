import "./app.css";
import { Component, h } from "preact";
import { nav, store } from "../app";
import { isTicket, kRoutes, Route, Section, sectionOf, siblingsOf } from "../route";
import { currentLanguage, t } from "../texts/texts";
import { Accounts } from "./assets";
import { Fills } from "./fills";
import { Later } from "./later";
import { redrawLive } from "./live";
import { LoginForm } from "./login";
import { Notices } from "./notices";
import { Orders } from "./orders";
import { Icon, Note } from "./parts";
import { Positions } from "./positions";
import { showNotice } from "./systemnotices";
import { presenceText } from "./terminals";
import { UnderWay } from "./underway";

const kViews: { [Name in Route]: () => JSX.Element } = {
  assets: () => <Accounts />,
  "assets/equity": () => <Later view="Equity" />,
  "assets/classes": () => <Later view="Exposures" />,
  "assets/credit": () => <Later view="Credit" />,
  "assets/margin": () => <Later view="Margin" />,
  positions: () => <Positions />,
  quotes: () => <Later view="Quotes" />,
  orders: () => <Orders />,
  "orders/fills": () => <Fills />,
  monitor: () => <Later view="Differences" />,
  "monitor/sync": () => <Later view="SyncOrders" />,
  "monitor/manual": () => <Later view="Manual" />,
  settings: () => <Later view="Settings" />,
};

const kIcons: { [Name in Section | "trade"]: string } = {
  assets: "M4 7h16v12H4zM4 7l3-3h10v3M15 13h2",
  positions: "M4 6h16M4 12h16M4 18h10",
  quotes: "M7 3v4m0 9v5M4.5 7h5v9h-5zM17 3v3m0 8v7M14.5 6h5v8h-5z",
  trade: "M12 5v14M5 12h14",
  orders: "M6 3h9l4 4v14H6zM9 11h7M9 15h7",
  monitor: "M3 12h4l3-7 4 14 3-7h4",
  settings: "M4 7h9m5 0h2M4 17h2m5 0h9M13 4v6M8 14v6",
};

function Tab(props: { section: Section; badge?: number }) {
  const { section, badge = 0 } = props;
  const isHere = sectionOf(store.place.route) === section;
  return (
    <a href={`#/${section}`} aria-current={isHere ? "page" : null} class="tab">
      <Icon path={kIcons[section]} />
      <span>{t(section)}</span>
      {badge > 0 ? (
        <b class="badge num" aria-label={t("newFills", badge)}>
          {badge}
        </b>
      ) : null}
    </a>
  );
}

function Navigation() {
  return (
    <nav class="tabs" aria-label={t("views")}>
      <Tab section="assets" />
      <Tab section="positions" />
      <Tab section="quotes" />
      {store.may("trade") && store.may("see") ? (
        <button class="tab trade" onClick={() => nav.open("trade")}>
          <Icon path={kIcons.trade} />
          <span>{t("trade")}</span>
        </button>
      ) : null}
      <Tab section="orders" badge={store.notices.newFills} />
      <Tab section="monitor" />
    </nav>
  );
}

const isSilent = (): boolean => store.link === "online" && store.connection.isSilent(store.now);

// A notice takes the place of the title: there it covers no control.
function Header(props: { hasNotices: boolean }) {
  const state = isSilent() ? "silent" : store.link;
  const hasNotice = props.hasNotices && store.notices.list.length > 0;
  return (
    <header class={hasNotice ? "top noticing" : "top"}>
      <h1>{t(sectionOf(store.place.route))}</h1>
      {props.hasNotices ? <Notices /> : null}
      <span class={`link ${state}`} role="status" data-link={state}>
        <i aria-hidden="true" />
        {state === "online" && store.terminal !== "" ? store.terminal : t(state)}
      </span>
      <a class="icon" href="#/settings" aria-label={t("settings")}>
        <Icon path={kIcons.settings} />
      </a>
    </header>
  );
}

// Why the figures are out of date, and what can be done about it.
function Banner() {
  const { link, connection, now } = store;
  if (link === "off" || (link === "online" && !isSilent())) return null;
  const seconds = Math.max(0, Math.ceil((connection.retryAt - now) / 1000));
  const { absence } = connection;
  const why = absence === null ? "" : t("whyWaiting", store.terminal || t("terminal"), presenceText(absence));
  const texts = {
    online: t("silentLong"),
    waiting: t("waitingLong", seconds),
    connecting: t("connectingLong"),
    replaced: t("replacedLong"),
  };
  return (
    <div class="banner">
      <span>{`${link === "replaced" ? "" : why} ${texts[link]}`.trim()}</span>
      {link === "connecting" || link === "online" ? null : (
        <button onClick={() => connection.retryNow()}>{t(link === "replaced" ? "useHere" : "retryNow")}</button>
      )}
    </div>
  );
}

function SubTabs() {
  const routes = siblingsOf(store.place.route);
  if (routes.length < 2) return null;
  return (
    <nav class="subtabs" aria-label={t(sectionOf(store.place.route))}>
      {routes.map((route) => (
        <a key={route} href={`#/${route}`} aria-current={route === store.place.route ? "page" : null}>
          {t(kRoutes[route].title)}
        </a>
      ))}
    </nav>
  );
}

export class App extends Component<{}, { isCovered: boolean }> {
  state = { isCovered: false }; // by a dialog, which shows the notices itself

  componentDidMount() {
    store.subscribe({ changed: () => this.setState({}), notify: showNotice, moved: redrawLive });
    this.componentDidUpdate();
  }

  componentDidUpdate() {
    const { newFills } = store.notices;
    document.title = `${newFills > 0 ? `(${newFills}) ` : ""}${t(sectionOf(store.place.route))} · pocket-terminal`;
    document.documentElement.lang = currentLanguage() === "zh" ? "zh-CN" : "en";
    document.documentElement.dataset.rise = store.prefs.rise;
    // The address may name a dialog whose row is gone.
    const isCovered = document.querySelector("dialog") !== null;
    if (isCovered !== this.state.isCovered) this.setState({ isCovered });
  }

  render() {
    if (store.token === "") return <LoginForm />;
    const { route, sheet } = store.place;
    const isBlind = store.login !== null && !store.may("see");
    return (
      <div class="app">
        <a class="skip" href="#content">
          {t("skip")}
        </a>
        <Header hasNotices={!this.state.isCovered} />
        <Navigation />
        <main id="content" tabIndex={-1}>
          <Banner />
          <Note text={isBlind ? t("blind") : ""} />
          <UnderWay />
          <SubTabs />
          {kViews[route]()}
        </main>
        {isTicket(sheet) && store.may("trade") ? <Later view="OrderTicket" /> : null}
      </div>
    );
  }
}
