import { h } from "preact";
import { store } from "../app";
import { sumOf } from "../figures";
import { percent } from "../format";
import { kCreditFields } from "../texts/fields";
import { t } from "../texts/texts";
import { AccountTitle } from "./assets";
import { ListFrame } from "./list";
import { FieldList } from "./parts";

export function Credit() {
  const rows = store.lists.credit.rows.flatMap((each) =>
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
  const { rows } = store.lists.margin;
  const count = sumOf(rows, (each) => each.rate.length);
  return (
    <ListFrame name="margin" title={t("margin")} count={count} empty={t("noMargin")}>
      <div class="cards">
        {rows.map((each) => (
          <article class="card" key={String(each.index)}>
            <AccountTitle index={each.index} />
            <dl class="fields">
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
      </div>
    </ListFrame>
  );
}
