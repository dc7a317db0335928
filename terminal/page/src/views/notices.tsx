import "./notices.css";
import { h } from "preact";
import { nav, store } from "../app";
import { Notice } from "../state/notices";
import { t } from "../texts/texts";

export function noticeText(notice: Notice): string {
  if (notice.kind !== "fill") return notice.text;
  return notice.count === 1 ? t("fillNotice", notice.text) : t("fillsNotice", notice.count, notice.text);
}

function follow(notice: Notice): void {
  store.notices.dismiss(notice);
  nav.follow(notice.address);
}

// The newest notice, and how many others wait. A dialog shows it in its own layer.
export function Notices() {
  const [notice, ...others] = store.notices.list;
  const dismiss = () => {
    store.notices.dismiss(notice);
    store.update();
  };
  return (
    <div class="notices" aria-live="polite" role="log">
      {notice === undefined ? null : (
        <p key={String(notice.id)} class={`notice ${notice.kind}`}>
          {notice.address === "" ? (
            <span class="notice-text">{notice.text}</span>
          ) : (
            <button class="notice-text" onClick={() => follow(notice)}>
              {noticeText(notice)}
            </button>
          )}
          {others.length > 0 ? <small>{t("moreNotices", others.length)}</small> : null}
          <button class="icon" aria-label={t("dismiss")} onClick={dismiss}>
            ✕
          </button>
        </p>
      )}
    </div>
  );
}
