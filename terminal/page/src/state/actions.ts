import { Language, t, useLanguage } from "../texts/texts";
import { Bodies, Order, Replies } from "../wire/values";
import { ListName } from "./lists";
import { Store } from "./store";
import { Outcome, outcomeOf } from "./why";

// A request that changes something and whose outcome its lists show.
export async function act<Topic extends keyof Bodies & keyof Replies>(
  store: Store,
  topic: Topic,
  body: Bodies[Topic],
  touched: ListName[],
): Promise<Outcome> {
  const reply = await store.connection.request(topic, body, store.platform.randomText(16));
  store.asker.askNow(touched);
  return outcomeOf(reply);
}

export function speak(store: Store, language: Language): void {
  store.platform.remember("language", language);
  useLanguage(language);
  store.update();
}

export function clearDraft(store: Store, index: number): void {
  store.drafts.drop(index);
  store.update();
}

// Cancels each by a separate request: in a common one, the first refusal would keep the rest.
export async function cancel(store: Store, orders: Order[]): Promise<void> {
  const failures = (await Promise.all(orders.map((order) => store.desk.cancel(order)))).filter((each) => each !== "");
  store.asker.askNow(["orders"]);
  const count = orders.length - failures.length;
  if (failures.length > 0) store.tell(t("cancelFailed", failures.length, failures[0]), true);
  if (count > 0) store.tell(count === 1 ? t("cancelSent") : t("cancelsSent", count));
}
