import { Reply } from "../connection";
import { explained } from "../texts/refusals";
import { t } from "../texts/texts";

// Why a request was not done, in the page's language. Empty if it was done.
export function whyNot(reply: Reply): string {
  switch (reply.kind) {
    case "done":
      return "";
    case "failed":
    case "unclear":
      return explained(reply.message);
    case "garbled":
      return t("garbled", reply.text.slice(0, 200));
    default:
      return t(reply.kind);
  }
}
