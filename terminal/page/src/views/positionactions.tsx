import { h } from "preact";
import { nav, store } from "../app";
import { closingText } from "../describe";
import { Pair } from "../state/asker";
import { t } from "../texts/texts";
import { closing, opening, reversal } from "../ticket/fill";
import { holdingOf, mayOrder, Ticket } from "../ticket/ticket";
import { CodeClass } from "../wire/values";

function start(ticket: Ticket, sheet: "trade" | "review"): void {
  store.draft(ticket);
  nav.open(sheet);
}

// Close, add to or reverse a position. Each fills in the ticket; what closes all that can be closed goes straight to
// the confirmation, from where it can still be changed.
export function PositionActions(props: { pair: Pair }) {
  const { index, hashCode } = props.pair;
  const quote = store.quote(hashCode);
  const account = store.accountOf(index);
  const held = holdingOf(store.asker.positionOf({ index, hashCode }));
  if (!store.may("trade") || quote === undefined || account === undefined || !mayOrder(account)) return null;
  const sides = (["long", "short"] as const).filter((side) => held[side] > 0);
  if (sides.length === 0) return null;
  const hasReversal = sides.length === 1 && (quote.codeClass === CodeClass.Future || quote.codeClass === CodeClass.Option);
  return (
    <div class="actions">
      {sides.map((side) => {
        const free = side === "long" ? held.longFree : held.shortFree;
        const name = sides.length === 1 ? t("closeIt") : closingText(side, held);
        return (
          <button
            key={side}
            class="primary"
            disabled={free === 0}
            onClick={() => start(closing(account, quote, side, held), "review")}
          >
            {name}
          </button>
        );
      })}
      {sides.length === 1 ? (
        <button onClick={() => start(opening(account, quote, sides[0]), "trade")}>{t("addTo")}</button>
      ) : null}
      {hasReversal ? (
        <button
          disabled={(sides[0] === "long" ? held.longFree : held.shortFree) !== held[sides[0]]}
          onClick={() => start(reversal(account, quote, sides[0], held), "review")}
        >
          {t("reverse")}
        </button>
      ) : null}
    </div>
  );
}
