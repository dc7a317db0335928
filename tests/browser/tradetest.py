#!/usr/bin/python3
"""Orders from the ticket to the terminal. Usage: tradetest.py POCKET_TERMINAL"""

from selenium.webdriver.common.keys import Keys

from page import PageTest, main, number
from terminal import resize


class TradeTest(PageTest):
    # The options account is logged in, and two others may not order.
    change = """UPDATE account SET online = 1 WHERE idx = 3;
        INSERT INTO account SELECT 5, 'N0050005', 1, 1, 1, 1, 0, 1000000, 0, 0, 0;
        INSERT INTO account SELECT 6, 'X0060006', 1, 1, 0, 1, 1, 1000000, 0, 0, 0;"""

    def test_buy_two_see_the_fill_and_close_them_in_eight_taps(self):
        self.tap(".tab.trade")
        self.tap(".found [role=option]", "SR701")
        self.tap("dialog button[aria-label='More Volume']")
        bought = self.review()
        self.assertEqual("Buy to open", bought["Deal"])
        self.confirm()
        self.assertSent(bought)
        self.tap("button.notice-text", "Filled: Buy to open 白糖701 2 @ 5,491 · 80010001")
        self.tap("dialog .actions button", "Close")
        closed = self.confirmed()
        self.assertEqual(("Sell to close", "2"), (closed["Deal"], closed["Volume"]))
        self.assertEqual(("long 2 / short 0", "long 0 / short 0"), (closed["Position before"], closed["Position after"]))
        self.confirm()
        self.see("button.notice-text", "Filled: Sell to close 白糖701 2")
        self.assertSent(closed)
        self.assertLessEqual(self.taps, 8)
        held = [row for row in self.terminal.call("position.list", [1]) if row["code"] == "SR701"]
        self.assertEqual([0], [row["longPosition"] for row in held])
        available = self.terminal.call("capital.list", [1])[0]["available"]
        self.assertAlmostEqual(available, number(closed["Available after"]), 2)

    def test_each_kind_of_account_sends_what_it_shows(self):
        for account, code, action, price, volume, isMarket in (
                ("80010001", "TA701", "Buy to open", 4500, 3, False),
                ("80010001", "TA701", "Sell to open", None, 1, True),
                ("80010001", "m2701", "Close long", "3,100", 2, False),
                ("80010001", "cu2701", "Close short", None, 1, True),
                ("A60012345", "000858", "Buy", 120.5, 200, False),
                ("A60012345", "601318", "Buy", None, 100, True),
                ("A60012345", "600036", "Sell", 45, 300, False),
                ("80080003", "10008001", "Buy to open", 0.05, 4, False),
                ("80080003", "IO2612", "Close long", 500.2, 1, False),
                ("E0450016", "000001", "Margin buy", 10.5, 500, False),
                ("E0450016", "600036", "Short sell", 46, 100, False),
                ("E0450016", "000858", "Buy to return", 115, 200, False),
                ("E0450016", "601318", "Sell to repay", 60, 400, False)):
            with self.subTest(account=account, code=code, action=action):
                self.ticket(code, action, price, volume, account, isMarket)
                said = self.review()
                self.assertEqual(account, said["Account"].split(" ")[0])
                self.assertIn(code, said["Instrument"])
                self.assertEqual(action.startswith("Close"), "to close" in said["Deal"])
                if reasons := self.found(".reasons input"):
                    reasons[0].click()
                self.confirm()
                self.gone("dialog")
                sent = self.assertSent(said)
                if price is not None:
                    self.assertEqual((number(str(price)), volume), (sent["price"], sent["volume"]))
                source = sent["source"]
                rows = self.wait(lambda: self.orders(source=source), f"{source} is not at the terminal")
                self.assertNotIn(4, [row["status"] for row in rows])

    def test_holding_one_side_preselects_closing_it(self):
        self.ticket("i2701")
        self.assertEqual("Close short 5", self.run_js(
            "return document.querySelector('dialog .choices input:checked + span').innerText"))
        self.assertEqual("5", self.see("#volume").get_attribute("value"))
        quote = next(row for row in self.terminal.call("quote.list", {}) if row["codeExch"] == "i2701.DCE")
        for text, member in (("Last", "lastPrice"), ("Ask", "askPrice"), ("Bid", "bidPrice")):
            self.tap("dialog .quote", text)
            self.assertEqual(quote[member], number(self.see("#price").get_attribute("value")))
            self.see("dialog .quote", f"{text}\n{quote[member]:.1f}")
        facts = self.see("dialog .facts").text
        for text in ("Available", "long 0 / short 5", "707.5 – 830.5", "0.5"):
            self.assertIn(text, facts)
        self.assertFalse(self.see("dialog .part").get_attribute("open"))
        self.tap("dialog .part summary")
        self.tap("dialog .part label", "Yesterday's")
        said = self.review()
        self.assertEqual("Buy to close yesterday's", said["Deal"])
        self.assertEqual(("long 0 / short 5", "long 0 / short 0"), (said["Position before"], said["Position after"]))

    def test_price_and_volume_are_seen_above_the_keyboard(self):
        resize(self.browser, 360, 450)
        for code in ("au2702", "rb2701"):  # the second one is held on both sides
            self.ticket(code)
            for field in ("price", "volume"):
                box = self.see(f"#{field}").rect
                self.assertTrue(self.run_js("""const box = document.getElementById(arguments[0]).getBoundingClientRect();
                    return document.elementFromPoint(box.x + box.width / 2, box.y + box.height / 2).id === arguments[0]
                        && box.bottom <= innerHeight""", field), box)
            self.browser.back()
            self.gone("dialog")

    def test_funds_margin_and_shares_of_the_largest_volume(self):
        self.ticket("au2702", "Buy to open", 965)
        available = next(row["available"] for row in self.terminal.call("capital.list", [1]))
        largest = int(available // (965 * 1000 * 0.14 + 10))
        for text, volume in (("All", largest), ("½", largest // 2), ("¼", largest // 4)):
            self.tap("dialog .shares button", text)
            self.assertEqual(str(volume), self.see("#volume").get_attribute("value"))
            facts = self.see("dialog .facts").text
            self.assertIn(f"{volume * 965 * 1000 * 0.14 + volume * 10:,.2f}", facts)
            self.assertIn(f"Commission\n{volume * 10:,.2f}", facts)
        said = self.review()
        self.assertEqual(round(available - volume * (965 * 1000 * 0.14 + 10), 2), number(said["Available after"]))

    def test_errors_are_beside_their_fields_and_named(self):
        self.ticket("cu2701", "Buy to open", "86,155", "0")
        self.tap("dialog .primary", "Review")
        for field, text in (("price", "multiple of 10"), ("volume", "whole number from 1 to 200")):
            element = self.see(f"#{field}[aria-invalid=true]")
            self.assertIn(text, self.see("#" + element.get_attribute("aria-describedby")).text)
        self.assertEqual("price", self.browser.switch_to.active_element.get_attribute("id"))
        self.fill("price", "86,150")
        self.gone("#price[aria-invalid]")
        self.assertEqual([], self.faults())
        self.tap("dialog .choices label", "Close short")
        self.fill("volume", "200")
        self.see("#volume-failure", "can be closed.")

    def test_mistakes_need_a_second_different_tap(self):
        for code, action, price, volume, reason in (
                ("rb2701", "Buy to open", 3400, 1, "more than 1 %"),
                ("rb2701", "Sell to open", 3325, 1, "hold the other side"),
                ("au2702", "Buy to open", 950, 90, "available funds"),
                ("au2702", "Buy to open", 950, 5, "more than 25 %")):
            with self.subTest(reason=reason):
                self.ticket(code, action, price, volume)
                self.review()
                self.assertIn(reason, self.see(".reasons").text)
                self.run_js("return new Promise((done) => setTimeout(done, 500))")  # longer than after a double tap
                self.assertFalse(self.see("dialog .actions .primary").is_enabled())
                self.tap(".reasons input")
                self.see("dialog .actions .primary:enabled")
                self.browser.back()
                self.browser.back()
                self.gone("dialog")
                self.assertEqual([], self.frames("order.new"))

    def test_the_share_that_asks_twice_is_never_set_by_half_a_number(self):
        def share():
            return self.run_js("return JSON.parse(localStorage.getItem('prefs') ?? '{}').share ?? 25")
        self.go("settings")
        field = self.see("#share")
        for text, kept in (("", 25), ("400", 40), ("x", 40), ("5", 5), ("25", 25)):
            field.send_keys(Keys.CONTROL, "a")
            field.send_keys(text or Keys.DELETE)
            self.assertEqual(kept, share(), text)
            self.assertEqual(text, field.get_attribute("value"))
            self.assertEqual(text in ("5", "25"), field.get_attribute("aria-invalid") is None)

    def test_a_ticket_survives_backdrop_reload_account_and_back(self):
        def shown():
            return [self.see(f"#{field}").get_attribute("value") for field in ("price", "volume")]
        self.ticket("TA701", "Sell to open", "4,640", "3")
        self.run_js("document.querySelector('dialog').click()")  # beside the panel
        self.gone("dialog")
        self.tap(".tab.trade")
        self.assertEqual(["4,640", "3"], shown())
        self.browser.refresh()
        self.see("dialog #price")
        self.assertEqual(["4,640", "3"], shown())
        self.choose("Account", "A60012345")
        self.gone("dialog #price")
        self.choose("Account", "80010001")
        self.see("dialog #price")
        self.assertEqual(["4,640", "3"], shown())
        self.review()
        self.browser.back()
        self.see("dialog .ticket")
        self.assertEqual(["4,640", "3"], shown())
        self.browser.back()
        self.gone("dialog")
        self.tap(".tab.trade")
        self.assertEqual("Sell to open", self.action())
        self.assertEqual(["4,640", "3"], shown())

    def test_double_tap_on_review_confirms_nothing(self):
        self.ticket("TA701", "Buy to open", 4402, 1)
        self.run_js("""document.querySelector('dialog form .primary').click();
            return new Promise((done) => setTimeout(done, 100)).then(() => document.querySelector('dialog .primary').click());""")
        self.see("dialog .primary:enabled")
        self.assertEqual([], self.frames("order.new"))

    def test_a_refusal_keeps_the_ticket_and_speaks_the_page_s_language(self):
        self.ticket("T2703", "Buy to open", 107, 50)
        self.run_js("""const send = WebSocket.prototype.send;
            WebSocket.prototype.send = function (text) { send.call(this, text.replace('"volume":50', '"volume":51')); };""")
        self.review()
        if reasons := self.found(".reasons input"):
            reasons[0].click()
        self.confirm()
        failure = self.see("dialog [role=alert]").text
        self.assertIn("Volume 51 is above the limit of 50 for one order", failure)
        self.assertIn("委托数量 51 超过单笔上限 50", failure)
        self.tap("dialog .actions button", "Edit")
        self.assertEqual("50", self.see("#volume").get_attribute("value"))

    def test_who_may_not_order_is_not_offered_to(self):
        for account in ("N0050005", "X0060006"):
            self.ticket("TA701", "Buy to open", 4402, 1, account)
            self.see("dialog .failure", "may not place orders")
            self.tap("dialog .primary", "Review")
            self.see("dialog .ticket")
            self.run_js("localStorage.removeItem('drafts')")
            self.open()
        self.tap(".tab.trade")
        self.assertEqual("80010001", self.run_js(
            "return document.querySelector('dialog .pick select').selectedOptions[0].text"))


if __name__ == "__main__":
    main()
