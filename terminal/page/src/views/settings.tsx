import { Component, h } from "preact";
import { store } from "../app";
import { speak } from "../state/actions";
import { currentLanguage, Language, t, TextName } from "../texts/texts";
import { isCount, moved, readNumber } from "../ticket/numbers";
import { Choices, Stepper } from "./controls";
import { allowSystemNotices } from "./systemnotices";
import { TerminalList } from "./terminals";

const kLanguages: readonly [Language, string][] = [
  ["zh", "中文"],
  ["en", "English"],
];
const kRises = ["red", "green"] as const;

export function LanguageSwitch() {
  return (
    <Choices
      name="language"
      label={t("language")}
      hasLabel
      value={kLanguages.findIndex(([language]) => language === currentLanguage())}
      values={[0, 1]}
      text={(place) => kLanguages[place][1]}
      onPick={(place) => speak(store, kLanguages[place][0])}
    />
  );
}

async function switchNotices(): Promise<void> {
  if (store.prefs.notifies) return store.prefer({ notifies: false });
  if (await allowSystemNotices()) store.prefer({ notifies: true });
  else store.tell(t("notifyDenied"), true);
}

function switchVibration(): void {
  store.prefer({ vibrates: !store.prefs.vibrates });
  if (store.prefs.vibrates) store.platform.vibrate(); // shows what it is like
}

// A switch with its name, and what it does.
function Switch(props: { name: "notify" | "vibrate"; isOn: boolean; onSwitch: () => void }) {
  const { name, isOn } = props;
  return (
    <section class="card" aria-label={t(name)}>
      <p class="line">
        <span>{t(name)}</span>
        <button aria-pressed={String(isOn)} onClick={props.onSwitch}>
          {t(isOn ? "switchOn" : "switchOff")}
        </button>
      </p>
      <p class="hint">{t(`${name}Hint`)}</p>
    </section>
  );
}

class Share extends Component<{}, { typed: string }> {
  state = { typed: String(store.prefs.share) };

  // The last share that can be one stays while another is typed.
  private type(typed: string) {
    this.setState({ typed });
    if (isCount(typed, 1, 100)) store.prefer({ share: readNumber(typed) });
  }

  render() {
    const { typed } = this.state;
    return (
      <Stepper
        id="share"
        label={t("share")}
        mode="numeric"
        value={typed}
        failure={isCount(typed, 1, 100) ? "" : t("badShare", store.prefs.share)}
        onChange={(text) => this.type(text)}
        onStep={(steps) => this.type(moved(String(store.prefs.share), steps, 5, 5, 100))}
      />
    );
  }
}

function About() {
  const { login } = store;
  const rows: [string, string][] = [[t("terminal"), `${store.terminal} ${location.host}`.trim()]];
  if (login !== null) {
    rows.push([t("tokenName"), login.name]);
    rows.push([t("rights"), login.rights.map((right) => t(`right_${right}` as TextName)).join(" · ")]);
  }
  return (
    <dl class="fields">
      {rows.map(([name, value]) => (
        <div key={name}>
          <dt>{name}</dt>
          <dd>{value}</dd>
        </div>
      ))}
    </dl>
  );
}

export function Settings() {
  return (
    <div class="settings">
      {store.terminal === "" ? null : <TerminalList />}
      <section class="card" aria-label={t("settings")}>
        <LanguageSwitch />
        <Choices
          name="rise"
          label={t("rise")}
          hasLabel
          value={kRises.indexOf(store.prefs.rise)}
          values={[0, 1]}
          text={(place) => t(place === 0 ? "riseRed" : "riseGreen")}
          onPick={(place) => store.prefer({ rise: kRises[place] })}
        />
        <p class="hint">{t("riseHint")}</p>
      </section>
      <section class="card wordy" aria-label={t("share")}>
        <Share />
        <p class="hint">{t("shareHint")}</p>
      </section>
      <Switch name="notify" isOn={store.prefs.notifies} onSwitch={() => void switchNotices()} />
      {"vibrate" in navigator ? <Switch name="vibrate" isOn={store.prefs.vibrates} onSwitch={switchVibration} /> : null}
      <section class="card" aria-label={t("terminal")}>
        <About />
        <button class="wide danger" onClick={() => store.forget()}>
          {store.terminals.all().length > 1 ? t("forgetOne", store.terminal) : t("forget")}
        </button>
        <p class="hint">{t("forgetHint")}</p>
      </section>
    </div>
  );
}
