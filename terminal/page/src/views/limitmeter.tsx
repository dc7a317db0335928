import "./pictures.css";
import { h } from "preact";
import { store } from "../app";
import { percent } from "../format";
import { kAtLimit, kNear, toneOfUse, useOf } from "../limits";
import { fieldName, kRisk } from "../texts/fields";
import { t } from "../texts/texts";
import { Capital } from "../wire/values";

// How near an account is to its limit: its risk, or its maintenance ratio against the floor. The marks are where the
// meter changes its colour.
export function LimitMeter(props: { capital: Capital }) {
  const { capital } = props;
  const credit = store.lists.credit.rows.find((each) => each.index === capital.index)?.creditInfo[0];
  const use = useOf(capital, store.accountOf(capital.index)?.marketType ?? 0, credit);
  const isRatio = use !== undefined && use.floor > 0;
  const name = isRatio ? t("keepRatio") : fieldName(kRisk);
  const share = use?.share ?? capital.risk;
  const tone = use === undefined ? "" : toneOfUse(share);
  const value = isRatio ? (credit?.marginRatio ? percent(credit.marginRatio) : t("noDebt")) : percent(capital.risk);
  const limit = isRatio ? t("floor", percent(use.floor)) : use === undefined ? "" : t("useLimits");
  return (
    <div class={`limit ${tone} ${use === undefined ? "" : "limited"}`}>
      <p class="line">
        <span>
          {name} <b class="num">{value}</b>{" "}
          {tone === "" ? null : <span class={`tag ${tone === "full" ? "over" : "warn"}`}>{t(tone === "full" ? "atLimit" : "nearLimit")}</span>}
        </span>
        <small class="figures">{limit}</small>
      </p>
      <meter
        min="0"
        max="1"
        low={use === undefined ? 1 : kNear}
        high={use === undefined ? 1 : kAtLimit}
        optimum={0}
        value={String(Math.min(1, Math.max(0, share || 0)))}
        aria-label={`${name} ${value} ${limit}`}
      />
    </div>
  );
}
