import { isKnown, Reply } from "../connection";
import { explained } from "../texts/refusals";
import { t } from "../texts/texts";

// The outcome of a request: why it failed, empty on success; and whether that is certain.
export interface Outcome {
  failure: string;
  isKnown: boolean;
}

export const outcomeOf = (reply: Reply): Outcome => ({ failure: whyNot(reply), isKnown: isKnown(reply) });

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
