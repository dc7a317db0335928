import { h } from "preact";
import { timeOfDay } from "../format";
import { Outgoing } from "../outgoing";
import { store } from "../store";
import { t } from "../texts";
import { Note } from "./parts";

const kHints = { sending: "sendingLong", unknown: "unknownLong", missing: "missingLong" } as const;

function Card(props: { outgoing: Outgoing }) {
  const { outgoing } = props;
  const isMissing = outgoing.state === "missing";
  return (
    <li class={`card outgoing ${outgoing.state}`}>
      <p class="line">
        <b>{outgoing.name}</b>
        <span class={outgoing.state === "sending" ? "tag" : "tag warn"}>{t(outgoing.state)}</span>
      </p>
      <p class="hint">
        {timeOfDay(outgoing.sentAt)} · {t(kHints[outgoing.state])}
      </p>
      <Note text={outgoing.failure} />
      {isMissing ? (
        <div class="actions">
          <button onClick={() => store.discard(outgoing)}>{t("discard")}</button>
          <button disabled={store.link !== "online"} onClick={() => void store.sendAgain(outgoing)}>
            {t("sendAgain")}
          </button>
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
        {store.outgoing.map((outgoing) => (
          <Card key={outgoing.key} outgoing={outgoing} />
        ))}
      </ul>
    </section>
  );
}
