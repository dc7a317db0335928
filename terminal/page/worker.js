// Phones let only a worker show notifications. A tap on one leads to its fill.
addEventListener("notificationclick", (event) => {
  const { notification } = event;
  const fill = notification.data;
  notification.close();
  const open = async () => {
    const [page] = await clients.matchAll({ type: "window", includeUncontrolled: true });
    if (page === undefined) return clients.openWindow(`/#/orders/fills+${encodeURIComponent(`row=${fill}`)}`);
    page.postMessage(fill);
    return page.focus();
  };
  event.waitUntil(open());
});
