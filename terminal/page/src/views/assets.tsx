import { h } from "preact";
import { fieldName, kCapitalFields, kClassFields, kCreditFields, kRisk } from "../fields";
import { money, percent, signed } from "../format";
import { store } from "../store";
import { named, t } from "../texts";
import { Figures, OfAccount } from "../wire";
import { FieldList, Gain, ListFrame, Total } from "./parts";

const kHeadline = 3; // fields of an account that stand open: equity, available, withdrawable

function profitToday(capital: OfAccount): number {
  return Number(capital.todayFloatingProfit) + Number(capital.closeProfit);
}

function AccountTitle(props: { index: number }) {
  const account = store.accountOf(props.index);
  return (
    <h3>
      {account?.userCode ?? String(props.index)}
      {account === undefined ? null : <span class="tag">{named("market", account.marketType)}</span>}
      {account?.accountStatus === 0 ? <span class="tag warn">{t("offline")}</span> : null}
    </h3>
  );
}

function AccountCard(props: { capital: OfAccount }) {
  const { capital } = props;
  const profit = profitToday(capital);
  const risk = Math.min(1, Math.max(0, Number(capital.risk) || 0));
  return (
    <article class="card">
      <div class="card-head">
        <AccountTitle index={capital.index} />
        <Gain value={profit} text={signed(profit, 2)} class="big" />
      </div>
      <p class="equity num">{money(capital.dynamicAmount)}</p>
      <FieldList fields={kCapitalFields.slice(1, kHeadline)} row={capital} />
      <p class="risk">
        <span>
          {fieldName(kRisk)} <b class="num">{percent(capital.risk)}</b>
        </span>
        <meter min="0" max="1" value={String(risk)} aria-label={fieldName(kRisk)} />
      </p>
      <details>
        <summary>{t("details", capital.userCode)}</summary>
        <FieldList fields={kCapitalFields.slice(kHeadline)} row={capital} />
      </details>
    </article>
  );
}

export function Accounts() {
  const rows = store.lists.capital.rows;
  const sum = (figure: (capital: OfAccount) => number) => rows.reduce((total, capital) => total + figure(capital), 0);
  const equity = sum((capital) => Number(capital.dynamicAmount));
  const profit = sum(profitToday);
  return (
    <ListFrame name="capital" title={t("accounts")} count={rows.length}>
      {rows.length > 1 ? (
        <Total name={t("total")} value={money(equity)} profit={profit} />
      ) : null}
      <div class="cards">
        {rows.map((capital) => (
          <AccountCard key={capital.index} capital={capital} />
        ))}
      </div>
    </ListFrame>
  );
}

export function Classes() {
  const rows = store.lists.classes.rows;
  return (
    <ListFrame name="classes" title={t("classes")} count={rows.length}>
      <div class="cards">
        {rows.map((row) => (
          <article class="card" key={String(row.codeType)}>
            <h3>{String(row.codeType)}</h3>
            <FieldList fields={kClassFields} row={row} />
          </article>
        ))}
      </div>
    </ListFrame>
  );
}

export function Credit() {
  const rows: { index: number; record: Figures }[] = store.lists.credit.rows.flatMap((each) =>
    each.creditInfo.map((record) => ({ index: each.index, record })),
  );
  return (
    <ListFrame name="credit" title={t("credit")} count={rows.length} empty={t("noCredit")}>
      <div class="cards">
        {rows.map((row) => (
          <article class="card" key={String(row.index)}>
            <AccountTitle index={row.index} />
            <FieldList fields={kCreditFields} row={row.record} />
          </article>
        ))}
      </div>
    </ListFrame>
  );
}

export function Margin() {
  const count = store.lists.margin.rows.reduce((total, each) => total + each.rate.length, 0);
  return (
    <ListFrame name="margin" title={t("margin")} count={count} empty={t("noMargin")}>
      {store.lists.margin.rows.map((each) => (
        <article class="card" key={String(each.index)}>
          <AccountTitle index={each.index} />
          <dl class="rates">
            {each.rate.map((rate) => {
              const quote = store.quote(rate.hashCode);
              return (
                <div key={String(rate.hashCode)}>
                  <dt>
                    {quote?.codeName ?? String(rate.hashCode)} <small>{quote?.codeExch}</small>
                  </dt>
                  <dd class="num">{percent(rate.marginRate)}</dd>
                </div>
              );
            })}
          </dl>
        </article>
      ))}
    </ListFrame>
  );
}
