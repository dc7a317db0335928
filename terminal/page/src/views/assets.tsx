import { h } from "preact";
import { store } from "../app";
import { profitToday, returnToday, startMoney, sumOf } from "../figures";
import { money, percent } from "../format";
import { kCapitalFields } from "../texts/fields";
import { named, t } from "../texts/texts";
import { Capital } from "../wire/values";
import { LimitMeter } from "./limitmeter";
import { ListFrame } from "./list";
import { Live } from "./live";
import { FieldList, Gain } from "./parts";

const follow = (row: Capital): Capital => store.prices.capital(row);
const kHeadline = 3; // fields of an account that are always shown: equity, available, withdrawable

export function AccountTitle(props: { index: number }) {
  const account = store.accountOf(props.index);
  return (
    <h3>
      {account?.userCode ?? String(props.index)}
      {account === undefined ? null : <span class="tag">{named("market", account.marketType)}</span>}
      {account?.accountStatus === 0 ? <span class="tag warn">{t("offline")}</span> : null}
    </h3>
  );
}

// Today's profit and the percentage that belongs to it.
function Today(props: { profit: number; ratio: number }) {
  return (
    <p class="today">
      <small>{t("today")}</small> <Gain value={props.profit} class="strong" />{" "}
      <Gain value={props.profit} text={percent(props.ratio, true)} />
    </p>
  );
}

function AccountCard(props: { capital: Capital }) {
  const { capital } = props;
  return (
    <article class="card">
      <AccountTitle index={capital.index} />
      <p class="equity num">{money(capital.dynamicAmount)}</p>
      <Today profit={profitToday(capital)} ratio={returnToday(capital)} />
      <FieldList fields={kCapitalFields.slice(1, kHeadline)} row={capital} />
      <LimitMeter capital={capital} />
      <details>
        <summary aria-label={`${capital.userCode}: ${t("details")}`}>{t("details")}</summary>
        <FieldList fields={kCapitalFields.slice(kHeadline)} row={capital} />
      </details>
    </article>
  );
}

function Total(props: { rows: Capital[] }) {
  const rows = props.rows.map(follow);
  const equity = sumOf(rows, (capital) => capital.dynamicAmount);
  const today = sumOf(rows, profitToday);
  const start = sumOf(rows, startMoney);
  return (
    <div class="card sum">
      <small>{t("total")}</small>
      <p class="equity num">{money(equity)}</p>
      <Today profit={today} ratio={start > 0 ? today / start : 0} />
    </div>
  );
}

export function Accounts() {
  const { rows } = store.lists.capital;
  const follows = rows.some((row) => follow(row) !== row);
  return (
    <ListFrame name="capital" title={t("accounts")} count={rows.length} followed={follows ? "follows" : undefined}>
      {rows.length > 1 ? <Live draw={() => <Total rows={rows} />} /> : null}
      <div class="cards">
        {rows.map((row) => (
          <Live key={row.index} draw={() => <AccountCard capital={follow(row)} />} />
        ))}
      </div>
    </ListFrame>
  );
}
