import { h } from "preact";
import { store } from "../store";
import { currentLanguage, Language, t, TextName } from "../texts";
import { Right } from "../wire";
import { Choices } from "./parts";

const kLanguages: readonly [Language, string][] = [
  ["zh", "中文"],
  ["en", "English"],
];

export function LanguageSwitch() {
  return (
    <Choices
      name="language"
      label={t("language")}
      value={kLanguages.findIndex(([language]) => language === currentLanguage())}
      values={[0, 1]}
      text={(place) => kLanguages[place][1]}
      onPick={(place) => store.speak(kLanguages[place][0])}
    />
  );
}

export function Settings() {
  const rights: Right[] = store.login.rights ?? ["see", "cancel", "trade"];
  return (
    <section class="card settings" aria-label={t("settings")}>
      <LanguageSwitch />
      <dl class="confirm">
        <div>
          <dt>{t("terminal")}</dt>
          <dd>{location.host}</dd>
        </div>
        {store.login.name === undefined ? null : (
          <div>
            <dt>{t("tokenName")}</dt>
            <dd>{store.login.name}</dd>
          </div>
        )}
        <div>
          <dt>{t("rights")}</dt>
          <dd>{rights.map((right) => t(`right_${right}` as TextName)).join(" · ")}</dd>
        </div>
      </dl>
      <p class="hint">{t("gainHint")}</p>
      <button class="wide danger" onClick={() => store.forget()}>
        {t("forget")}
      </button>
      <p class="hint">{t("forgetHint")}</p>
    </section>
  );
}
