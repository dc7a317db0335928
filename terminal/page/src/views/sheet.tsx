import "./sheet.css";
import { Component, h } from "preact";
import { nav } from "../app";
import { t } from "../texts/texts";
import { Notices } from "./notices";

interface Props {
  title: string;
  aside?: unknown; // beside the title
  onClose?: () => void;
  children?: unknown;
}

// A dialog over the page: it holds the focus, Escape closes it, and the focus goes back to where it was. It fills the
// screen: a panel at the bottom and above it, never over it, the notices.
export class Sheet extends Component<Props, {}> {
  private readonly before = document.activeElement;
  private readonly close = (event: Event) => {
    event.preventDefault();
    (this.props.onClose ?? (() => nav.close()))();
  };

  componentDidMount() {
    (this.base as HTMLDialogElement).showModal();
    if (this.base.querySelector("[autofocus]") === null) this.focusTitle(); // and not the notice above it
  }

  // Another step in the same dialog: its first one took the focus with it.
  componentDidUpdate(previous: { title: string }) {
    if (previous.title !== this.props.title) this.focusTitle();
  }

  private focusTitle() {
    this.base.querySelector("h2")?.focus();
  }

  componentWillUnmount() {
    (this.base as HTMLDialogElement).close();
    if (this.before instanceof HTMLElement) this.before.focus({ preventScroll: true });
  }

  render() {
    const isBeside = (event: Event) => event.target === this.base;
    return (
      <dialog
        class="sheet"
        aria-label={this.props.title}
        onCancel={this.close}
        onClick={(event: Event) => isBeside(event) && this.close(event)}
      >
        <Notices />
        <div class="panel">
          <header>
            <h2 tabIndex={-1}>{this.props.title}</h2>
            {this.props.aside}
            <button class="icon" aria-label={t("close")} onClick={this.close}>
              ✕
            </button>
          </header>
          <div class="panel-body">{this.props.children}</div>
        </div>
      </dialog>
    );
  }
}
