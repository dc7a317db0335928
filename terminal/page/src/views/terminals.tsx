import { Component, h } from "preact";
import { readAccess } from "../access";
import { store } from "../app";
import { moment } from "../format";
import { Presence, probe } from "../state/terminals";
import { explained } from "../texts/refusals";
import { t } from "../texts/texts";

const kProbeAgainMs = 10_000;

export function presenceText({ failure, seen }: Presence): string {
  if (failure === "") return t("present");
  return seen === 0 ? explained(failure) : t("awaySince", moment(seen, store.platform.now()));
}

// The terminals of this relay whose tokens are kept here, and which of them can be reached.
export class TerminalList extends Component<{}, {}> {
  private presences = new Map<string, Presence | null>();
  private timer = 0;

  componentDidMount() {
    this.look();
  }

  componentWillUnmount() {
    store.platform.cancel(this.timer);
  }

  private look() {
    const others = store.terminals.all().filter((text) => text !== store.token);
    for (const text of store.platform.isSeen() ? others : []) {
      void probe(store.platform, readAccess(text)).then((presence) => {
        this.presences.set(text, presence);
        this.setState({});
      });
    }
    this.timer = store.platform.later(() => this.look(), kProbeAgainMs);
  }

  private text(text: string) {
    if (text === store.token) return t("inUse");
    const presence = this.presences.get(text);
    return presence === undefined ? "…" : presence === null ? t("unknownPresence") : presenceText(presence);
  }

  render() {
    const texts = store.terminals.all().sort();
    return texts.length === 0 ? null : (
      <section class="card" aria-label={t("terminals")}>
        {texts.map((text) => (
          <div class="line terminal" key={text}>
            <span>
              <b>{readAccess(text).terminal ?? location.host}</b> <small>{this.text(text)}</small>
            </span>
            {text === store.token ? null : <button onClick={() => store.logIn(text)}>{t("useTerminal")}</button>}
          </div>
        ))}
        <p class="hint">{t("terminalsHint")}</p>
      </section>
    );
  }
}
