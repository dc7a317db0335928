#!/usr/bin/python3
"""Lost replies, lost connections and what comes while nobody looks. Usage: breaktest.py POCKET_TERMINAL"""
import signal

from selenium.webdriver.common.keys import Keys

from page import PageTest, main


class BreakTest(PageTest):
    # Orders of another client that rest below the market, one of each volume. Returns their price.
    def place(self, *volumes, price=None):
        self.terminal.call("quote.set", {"hashCode": 3000001, "price": 5490})  # above what the sample's order would pay
        quote = next(row for row in self.terminal.call("quote.list", {}) if row["hashCode"] == 3000001)
        price = price or quote["bidPrice"] - 4
        self.terminal.call("order.new", {"orderList": [
            {"index": 1, "hashCode": 3000001, "side": 1, "combOffset": 1, "priceType": 1, "price": price, "offset": 0,
             "volume": volume, "insertTimestamp": 1, "source": "another"} for volume in volumes]})
        return price

    # Moves the market to where it fills them.
    def fillAt(self, price):
        self.terminal.call("quote.set", {"hashCode": 3000001, "price": price - 1})

    def hide(self, isHidden):
        self.run_js("""Object.defineProperty(document, 'visibilityState',
                {value: arguments[0] ? 'hidden' : 'visible', configurable: true});
            document.dispatchEvent(new Event('visibilitychange'));""", isHidden)

    def test_link_logs_in_and_a_reload_stays(self):
        self.assertNotIn("token", self.browser.current_url)
        self.assertEqual("pocket-terminal", self.browser.title.split(" · ")[-1])
        self.browser.refresh()  # the address has no token any more, the device has
        self.see(".link.online")

    def test_terminal_goes_and_comes_back(self):
        self.go("positions")
        self.see("[data-list=positions]:not(.stale) .row")
        self.terminal.end()
        self.see(".banner", "Disconnected")
        self.see("[data-list=positions].stale .stale-mark")
        self.assertEqual([], self.faults())
        self.terminal.start()
        self.see("[data-list=positions]:not(.stale) .row")
        self.gone(".banner")

    def test_a_terminal_that_does_not_answer_is_stale_after_five_seconds(self):
        self.go("orders/fills")  # asked for twice a minute
        self.see("[data-list=fills]:not(.stale) .row")
        self.terminal.end(signal.SIGSTOP)
        self.passes(4)
        self.assertEqual([], self.found(".list.stale"))
        self.passes(2)
        self.see(".list.stale")
        self.see(".banner", "does not answer")
        self.terminal.process.send_signal(signal.SIGCONT)
        self.see(".list:not(.stale)")

    def test_offline_counts_at_once(self):
        self.go("positions")
        self.see("[data-list=positions]:not(.stale) .row")
        self.assertTrue(self.run_js("""dispatchEvent(new Event('offline'));
            return new Promise((done) => requestAnimationFrame(() => requestAnimationFrame(() =>
                done(document.querySelector('[data-list=positions].stale') !== null))));"""))
        self.run_js("dispatchEvent(new Event('online'))")
        self.see("[data-list=positions]:not(.stale) .row")

    def test_order_whose_reply_is_lost_is_found(self):
        self.ticket("TA701", "Buy to open", 4502, 1)
        said = self.review()
        self.run_js("window.isDeaf = true")
        self.confirm()
        self.wait(lambda: self.orders(price=4502), "the order did not reach the terminal")
        self.assertSent(said)
        self.terminal.end()
        self.see(".outgoing.unknown", "Unknown")
        self.browser.get("about:blank")  # a page that is closed does not forget it
        self.terminal.start()
        self.browser.get(self.terminal.link)
        self.see(".notice", "did arrive")
        self.gone(".outgoing")
        self.assertEqual(1, len(self.orders(price=4502)))

    def test_the_same_order_again_or_old_figures_need_a_second_tap(self):
        self.ticket("TA701", "Buy to open", 4512, 1)
        self.review()
        self.run_js("window.isDeaf = true")
        self.confirm()
        self.wait(lambda: self.orders(price=4512), "the order did not reach the terminal")
        self.browser.back()  # the reply is late, and the ticket still filled in
        self.see("dialog .ticket")
        self.review()
        self.see(".reasons", "no outcome yet")
        self.assertFalse(self.see("dialog .actions .primary").is_enabled())
        self.run_js("window.isDeaf = false")
        self.open()
        self.gone(".outgoing")
        self.ticket("TA701", "Buy to open", 4514, 1)
        self.review()
        self.see("dialog .actions .primary:enabled")
        self.terminal.end(signal.SIGSTOP)
        self.passes(7)
        self.see(".reasons", "out of date")
        self.assertFalse(self.see("dialog .actions .primary").is_enabled())
        self.terminal.process.send_signal(signal.SIGCONT)
        self.gone(".reasons")
        self.see("dialog .actions .primary:enabled")

    def test_order_that_never_arrived_is_sent_again_once(self):
        self.ticket("TA701", "Buy to open", 4504, 1)
        self.review()
        self.terminal.end(signal.SIGSTOP)
        self.confirm()
        self.see(".outgoing.sending, .outgoing.unknown")
        self.terminal.end()
        first = self.frames("order.new")[0]
        self.see(".outgoing.unknown")
        self.terminal.start()
        self.see(".outgoing.missing")
        self.assertEqual([], self.orders(price=4504))
        self.tap(".outgoing button", "Send again")
        self.gone(".outgoing")
        again = self.frames("order.new")[-1]
        self.assertEqual((first["key"], first["data"]), (again["key"], again["data"]))
        self.assertEqual(1, len(self.orders(price=4504)))

    def test_synchronising_orders_are_placed_once_whatever_is_lost_or_placed_by_others(self):
        def ask(code):
            self.go("monitor/sync")
            self.tap(".row label", code)
            self.tap(".stick", "Place 1")
            self.see("dialog .asked", code)
        ask("au2702")
        row = next(row for row in self.terminal.call("monitor.sync.order.list", []) if row["codeExch"].startswith("au2702"))
        names = ("index", "hashCode", "volume", "price", "side", "combOffsetFlag")
        self.terminal.call("monitor.sync.order.new", [{name: row[name] for name in names}])
        self.see("dialog .failure", "The list has changed")
        self.assertFalse(self.see("dialog .primary").is_enabled())
        self.browser.back()
        self.gone("dialog")
        ask("SR701")
        self.terminal.end(signal.SIGSTOP)
        self.tap("dialog .primary")
        self.wait(lambda: self.frames("monitor.sync.order.new"), "not sent")
        self.terminal.end()
        self.see(".notice.error", "The reply was lost")
        self.gone("dialog")
        self.terminal.start()
        self.see("[data-list=sync]:not(.stale) .row", "SR701")  # is offered still, and picked by nobody
        self.assertEqual([], self.found(".stick, .row input:checked"))
        self.assertEqual(1, len(self.frames("monitor.sync.order.new")))

    def test_missed_pushes_are_resumed_and_a_gap_asks_for_lists(self):
        self.go("assets")
        price = self.place(1)
        self.run_js("window.isDeaf = true")
        self.fillAt(price)  # its push is missed
        self.run_js("dispatchEvent(new Event('offline')); window.isDeaf = false; dispatchEvent(new Event('online'))")
        self.see("button.notice-text", f"白糖701 1 @ {price:,.0f}")
        resumed = self.frames("login")[-1]["resume"]
        self.assertGreater(resumed["seq"], 0)
        self.tap("button[aria-label=Dismiss]")
        asked = len(self.frames("capital.list"))
        self.run_js("window.lostSeq = arguments[0]", resumed["seq"] + 3)
        self.place(1, price=5095)
        self.place(1, price=5095)
        self.wait(lambda: len(self.frames("trader.list")) > 1 and len(self.frames("capital.list")) > asked, "no fresh lists")

    def test_a_burst_of_fills_is_one_notice_that_covers_no_control(self):
        price = self.place(3, 4, 5)
        self.ticket("TA701", "Buy to open", 4506, 1)
        self.fillAt(price)
        self.see("dialog .notice.fill", f"3 fills, the last: Buy to open 白糖701 5 @ {price:,.0f} · 80010001")
        covered = self.run_js("""return [...document.querySelectorAll('dialog .panel button, dialog .panel input')]
            .filter((control) => {
                const {x, y, width, height} = control.getBoundingClientRect();
                const at = document.elementFromPoint(x + width / 2, y + height / 2);
                return at?.closest('.notices');
            }).map((control) => control.outerHTML)""")
        self.assertEqual([], covered)
        self.tap("dialog .notice button[aria-label=Dismiss]")
        self.gone("dialog .notice")
        self.assertEqual("4506", self.see("#price").get_attribute("value"))  # nothing else was closed
        self.browser.back()
        self.gone("dialog")

    def test_a_fill_opens_from_its_notice_over_a_dialog_and_leads_back(self):
        price = self.place(2)
        self.ticket("TA701", "Buy to open", 4508, 1)
        self.fillAt(price)
        self.tap("button.notice-text", f"Buy to open 白糖701 2 @ {price:,.0f} · 80010001")
        self.see("dialog h2", "白糖701")
        self.assertIn(f"{price:,.0f}", self.see("dialog .fields").text)
        self.browser.back()
        self.assertEqual("4508", self.see("#price").get_attribute("value"))

    def test_a_fill_is_told_though_the_dialog_of_the_address_is_gone(self):
        self.go("positions+row=1:42")  # of a row that is not there
        self.see("[data-list=positions] .row")
        self.fillAt(self.place(2))
        self.see(".top button.notice-text", "Buy to open 白糖701 2")

    def test_what_comes_while_hidden_is_kept_with_a_badge(self):
        self.go("orders/fills")
        self.see(".row")
        self.go("positions")
        self.see(".row")
        price = self.place(6)
        self.hide(True)
        self.fillAt(price)
        self.wait(lambda: self.browser.title.startswith("(1) "), "no count in the title")
        settings = "return document.querySelector('.top a.icon').getBoundingClientRect().top"
        self.assertIn("1", self.see(".tab .badge").text)
        self.hide(False)
        self.see("button.notice-text", f"白糖701 6 @ {price:,.0f}")
        self.assertLess(self.run_js(settings), 20)  # the notice moved no control out of its place
        self.tap(".tab[href='#/orders']")
        self.gone(".badge")
        self.assertFalse(self.browser.title.startswith("("))

    def test_the_system_notifies_of_fills_while_the_page_is_hidden(self):
        origin = f"http://127.0.0.1:{self.terminal.port}"
        self.browser.execute_cdp_cmd("Browser.grantPermissions", {"origin": origin, "permissions": ["notifications"]})
        self.go("settings")
        self.tap("button", "Turn on")
        self.see("button[aria-pressed=true]")
        # A browser without windows shows none.
        self.run_js("""ServiceWorkerRegistration.prototype.showNotification = async (...values) => {
                window.shown = values;
            };""")
        self.hide(True)
        price = self.place(7)
        self.fillAt(price)
        title, options = self.wait(lambda: self.run_js("return window.shown"), "no notification")
        self.assertEqual(f"Filled: Buy to open 白糖701 7 @ {price:,.0f} · 80010001", title)
        self.hide(False)
        self.run_js("navigator.serviceWorker.dispatchEvent(new MessageEvent('message', {data: arguments[0]}))", options["data"])
        self.assertIn(f"{price:,.0f}", self.see("dialog .fields").text)
        self.browser.back()
        self.gone("dialog")
        self.tap("button", "On. Tap to turn off")

    def test_rights_that_are_missing_are_not_offered(self):
        for rights, offered in ((["see"], set()), (["see", "cancel"], {".cancel"}),
                                (["see", "trade"], {".tab.trade"}), (["see", "cancel", "trade"], {".cancel", ".tab.trade"})):
            self.run_js("localStorage.setItem('test-rights', arguments[0])", str(rights).replace("'", '"'))
            self.go("orders")
            self.browser.refresh()
            self.see("[data-list=orders]:not(.stale) .row", "平安银行")
            self.assertEqual(offered, {each for each in (".cancel", ".tab.trade") if self.found(each)})
            if "trade" not in rights:
                self.go("monitor/sync")
                self.see("[data-list=sync] .row")
                self.assertEqual([], self.found(".row input"))

    def test_wrong_token_and_forgetting_lead_to_the_login(self):
        self.ticket("TA701", "Buy to open", 4510, 1)
        self.browser.back()
        self.gone("dialog")
        self.go("settings")
        self.tap("button", "Forget this device")
        self.see("input[name=token]")
        kept = self.run_js("return Object.keys(localStorage).filter((name) => name !== 'language' && name !== 'prefs')")
        self.assertEqual([], kept)
        self.see("input[name=token]").send_keys("wrong", Keys.ENTER)
        self.see("[role=alert]", "wrong token")
        self.assertEqual([], self.faults())
        self.browser.refresh()
        self.see("input[name=token]")

    def test_every_control_has_a_name(self):
        named = {"button", "link", "textbox", "combobox", "checkbox", "radio", "dialog", "navigation", "meter", "listbox"}
        for view, sheet in (("assets", ""), ("positions", ""), ("orders", ""), ("monitor/sync", ""), ("settings", ""),
                            ("positions", "trade")):
            self.go(view + (f"+{sheet}" if sheet else ""))
            self.see("dialog" if sheet else ".settings" if view == "settings" else ".list")
            tree = self.browser.execute_cdp_cmd("Accessibility.getFullAXTree", {})["nodes"]
            self.assertEqual([], [node["role"]["value"] for node in tree if not node["ignored"] and
                                  node["role"]["value"] in named and not node.get("name", {}).get("value")], view)


if __name__ == "__main__":
    main()
