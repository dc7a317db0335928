import { Component, h } from "preact";
import { kRoutes, Route, Section, sectionOf, siblingsOf } from "../route";
import { store } from "../store";
import { t } from "../texts";
import { Accounts, Classes, Credit, Margin } from "./assets";
import { LoginForm } from "./login";
import { Manual } from "./manual";
import { Differences } from "./monitor";
import { Fills, Orders } from "./orders";
import { Note } from "./parts";
import { Positions } from "./positions";
import { Settings } from "./settings";
import { SyncOrders } from "./syncorders";
import { OrderTicket } from "./ticket";
import { UnderWay } from "./underway";

const kViews: { [Name in Route]: () => JSX.Element } = {
  assets: () => <Accounts />,
  "assets/classes": () => <Classes />,
  "assets/credit": () => <Credit />,
  "assets/margin": () => <Margin />,
  positions: () => <Positions />,
  orders: () => <Orders />,
  "orders/fills": () => <Fills />,
  monitor: () => <Differences />,
  "monitor/sync": () => <SyncOrders />,
  "monitor/manual": () => <Manual />,
  settings: () => <Settings />,
};

const kIcons: { [Name in Section | "trade"]: string } = {
  assets: "M4 7h16v12H4zM4 7l3-3h10v3M15 13h2",
  positions: "M4 6h16M4 12h16M4 18h10",
  trade: "M12 5v14M5 12h14",
  orders: "M6 3h9l4 4v14H6zM9 11h7M9 15h7",
  monitor: "M3 12h4l3-7 4 14 3-7h4",
  settings: "M4 7h9m5 0h2M4 17h2m5 0h9M13 4v6M8 14v6",
};

function Icon(props: { name: Section | "trade" }) {
  return (
    <svg viewBox="0 0 24 24" aria-hidden="true">
      <path d={kIcons[props.name]} />
    </svg>
  );
}

function Tab(props: { section: Section }) {
  const { section } = props;
  const isHere = sectionOf(store.route) === section;
  return (
    <a href={`#/${section}`} aria-current={isHere ? "page" : null} class="tab">
      <Icon name={section} />
      <span>{t(section)}</span>
    </a>
  );
}

function Navigation() {
  return (
    <nav class="tabs" aria-label={t("views")}>
      <Tab section="assets" />
      <Tab section="positions" />
      {store.may("trade") && store.may("see") ? (
        <button class="tab trade" onClick={() => store.trade(true)}>
          <Icon name="trade" />
          <span>{t("trade")}</span>
        </button>
      ) : null}
      <Tab section="orders" />
      <Tab section="monitor" />
    </nav>
  );
}

function Header() {
  return (
    <header class="top">
      <h1>{t(sectionOf(store.route))}</h1>
      <span class={`link ${store.link}`} role="status" data-link={store.link}>
        <i aria-hidden="true" />
        {t(store.link)}
      </span>
      <a class="icon" href="#/settings" aria-label={t("settings")}>
        <Icon name="settings" />
      </a>
    </header>
  );
}

// Why what is shown is not fresh, and what can be done about it.
function Banner() {
  const { link, connection, now } = store;
  if (link === "online" || link === "off") return null;
  const seconds = Math.max(0, Math.ceil((connection.retryAt - now) / 1000));
  const texts = { waiting: t("waitingLong", seconds), connecting: t("connectingLong"), replaced: t("replacedLong") };
  return (
    <div class="banner">
      <span>{texts[link]}</span>
      {link === "connecting" ? null : (
        <button onClick={() => connection.retryNow()}>{t(link === "replaced" ? "useHere" : "retryNow")}</button>
      )}
    </div>
  );
}

function SubTabs() {
  const routes = siblingsOf(store.route);
  if (routes.length < 2) return null;
  return (
    <nav class="subtabs" aria-label={t(sectionOf(store.route))}>
      {routes.map((route) => (
        <a key={route} href={`#/${route}`} aria-current={route === store.route ? "page" : null}>
          {t(kRoutes[route].title)}
        </a>
      ))}
    </nav>
  );
}

function Notices() {
  return (
    <div class="notices" aria-live="polite" role="log">
      {store.notices.map((notice) => (
        <p key={String(notice.id)} class={notice.isError ? "notice error" : "notice"}>
          <span>{notice.text}</span>
          <button class="icon" aria-label={t("dismiss")} onClick={() => store.dismiss(notice)}>
            ✕
          </button>
        </p>
      ))}
    </div>
  );
}

export class App extends Component<{}, {}> {
  componentDidMount() {
    store.subscribe(() => this.setState({}));
  }

  componentDidUpdate() {
    document.title = `${t(sectionOf(store.route))} · pocket-terminal`;
  }

  render() {
    if (store.token === "") return <LoginForm />;
    return (
      <div class="app">
        <a class="skip" href="#content">
          {t("skip")}
        </a>
        <Header />
        <Navigation />
        <main id="content" tabIndex={-1}>
          <Banner />
          <Note text={store.may("see") ? "" : t("blind")} />
          <UnderWay />
          <SubTabs />
          {kViews[store.route]()}
        </main>
        {store.isTrading ? <OrderTicket /> : null}
        <Notices />
      </div>
    );
  }
}
