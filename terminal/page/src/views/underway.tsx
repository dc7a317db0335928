import { h } from "preact";
import { store } from "../app";
import { timeOfDay } from "../format";
import { Outgoing } from "../state/outgoing";
import { t } from "../texts/texts";
import { Note } from "./parts";

const kHints = {
  sending: "sendingLong",
  unknown: "unknownLong",
  missing: "missingLong",
  untold: "untoldLong",
} as const;

function Card(props: { outgoing: Outgoing }) {
  const { outgoing } = props;
  const { state } = outgoing;
  return (
    <li class={`card outgoing ${state}`}>
      <p class="line">
        <b>{outgoing.name}</b>
        <span class={state === "sending" ? "tag" : "tag warn"}>{t(state)}</span>
      </p>
      <p class="hint">
        {timeOfDay(outgoing.sentAt)} · {t(kHints[state])}
      </p>
      <Note text={outgoing.failure} />
      {state === "missing" || state === "untold" ? (
        <div class="actions">
          <button onClick={() => store.desk.discard(outgoing)}>{t("discard")}</button>
          {state === "missing" ? (
            <button disabled={store.link !== "online"} onClick={() => void store.desk.sendAgain(outgoing)}>
              {t("sendAgain")}
            </button>
          ) : null}
        </div>
      ) : null}
    </li>
  );
}

// Orders whose outcome has not been seen, above every view until it has.
export function UnderWay() {
  return (
    <section aria-label={t("underWay")} aria-live="polite" class="underway">
      <ul class="plain">
        {store.desk.outgoing.map((outgoing) => (
          <Card key={outgoing.key} outgoing={outgoing} />
        ))}
      </ul>
    </section>
  );
}
