import { Component, h } from "preact";
import { accessText } from "../access";
import { store } from "../app";
import { t } from "../texts/texts";
import { LanguageSwitch } from "./settings";
import { Note } from "./parts";
import { TerminalList } from "./terminals";

export class LoginForm extends Component<{}, { typed: string }> {
  state = { typed: "" };

  private submit(event: Event) {
    event.preventDefault();
    const token = accessText(this.state.typed);
    if (token !== "") store.logIn(token);
  }

  render() {
    return (
      <main class="login" id="content">
        <img src="icon.svg" alt="" width="72" height="72" />
        <h1>pocket-terminal</h1>
        <form onSubmit={(event: Event) => this.submit(event)}>
          <p>{t("tokenHint")}</p>
          <label class="field">
            <span>{t("token")}</span>
            <input
              type="password"
              name="token"
              autocomplete="off"
              value={this.state.typed}
              onInput={(event: Event) => this.setState({ typed: (event.target as HTMLInputElement).value })}
            />
          </label>
          <Note text={store.loginFailure} />
          <button class="primary wide">{t("login")}</button>
          <p class="hint">{t("rememberHint")}</p>
        </form>
        <TerminalList />
        <LanguageSwitch />
      </main>
    );
  }
}
