#!/usr/bin/python3
"""What is held and what works: closed, reversed, amended, cancelled, synchronised. Usage: orderstest.py POCKET_TERMINAL"""
from page import PageTest, main, number


class OrdersTest(PageTest):
    # A target needs three orders that are alike.
    change = "UPDATE strategy_target SET long_volume = 1508 WHERE hash_code = 1000001 AND strategy = '趋势一号';"

    def test_positions_are_closed_added_to_and_reversed(self):
        self.go("positions")
        self.tap(".row-main", "平安银行")  # of 10,000 shares 3,000 are being sold
        self.tap("dialog .actions button", "Close")
        self.assertEqual("7,000", self.confirmed()["Volume"])
        self.go("positions")
        self.gone("dialog")
        for button, said in (("Close", None), ("Add", "Buy to open")):
            self.tap(".row-main", "沪金2702")
            self.tap("dialog .actions button", button)
            self.assertEqual([], self.frames("order.new"))
            if said:
                self.assertEqual(said, self.action())
            else:
                self.assertEqual("Sell to close", self.confirmed()["Deal"])
            self.go("positions")
            self.gone("dialog")
        self.tap(".row-main", "铁矿石2701")
        self.tap("dialog .actions button", "Reverse")
        said = self.confirmed()
        held = self.terminal.call("position.list", [1])
        volume = next(row["shortPosition"] for row in held if row["code"] == "i2701")
        self.assertEqual((f"long 0 / short {volume}", f"long {volume} / short 0"),
                         (said["Position before"], said["Position after"]))
        rates = self.terminal.call("order.rates", {"index": 1, "hashCode": 2000002})
        self.assertAlmostEqual(773 * 100 * volume * rates["longByMoney"], number(said["Funds needed"]), delta=100)
        self.confirm()
        self.wait(lambda: len(self.frames("order.new")) == 2, "the second order was not sent")
        self.assertSent(said, 0)
        opening = self.frames("order.new")[1]["data"]["orderList"][0]
        self.assertEqual((1, 1, volume), (opening["side"], opening["combOffset"], opening["volume"]))
        def legs():
            row = next(row for row in self.terminal.call("position.list", [1]) if row["code"] == "i2701")
            return row["longPosition"], row["shortPosition"]
        self.wait(lambda: legs() == (volume, 0), f"not reversed: {legs()}")

    def test_an_order_is_pushed_amended_and_cancelled_whatever_account_is_picked(self):
        self.ticket("000858", "Buy", 119.5, 100, "A60012345")
        said = self.review()
        self.confirm()
        self.assertSent(said)
        self.ticket("TA701", "Buy to open", 4410, 1)  # the ticket is another account's now
        self.browser.back()
        self.gone("dialog")
        self.go("orders")
        self.tap(".row-main", "100 @ 119.50")
        self.tap("dialog .actions button", "Amend")
        self.fill("price", "119.60")
        amended = self.review()
        self.confirm()
        self.gone("dialog")
        self.see(".row", "100 @ 119.60")
        self.assertSent(amended)
        self.assertEqual([3], [row["status"] for row in self.orders(price=119.5)])
        self.assertEqual([1], [row["status"] for row in self.orders(price=119.6)])
        row = self.orders(price=119.6)[0]
        self.wait(lambda: self.run_js("""const row = [...document.querySelectorAll('.row')].find(
            (each) => each.innerText.includes('119.60'));
            row?.querySelector('.cancel')?.click();
            return row?.innerText.includes('Cancelled')"""), "not cancelled")
        self.assertEqual([{"index": 2, "localOrderId": row["localOrderId"], "hashCode": row["hashCode"]}],
                         self.frames("order.cancel")[-1]["data"])

    # An order of another client.
    def rest(self, price):
        self.terminal.call("order.new", {"orderList": [{"index": 1, "hashCode": 3000002, "side": 1, "combOffset": 1,
            "priceType": 1, "price": price, "offset": 0, "volume": 1, "insertTimestamp": 1, "source": "another"}]})

    def test_no_order_is_cancelled_that_has_just_slipped_under_the_finger(self):
        self.go("orders")
        self.see(".row .cancel")
        self.run_js("""new MutationObserver((_, observer) => {
                observer.disconnect();
                document.querySelector('.row .cancel').click();
            }).observe(document.querySelector('.rows'), {childList: true});""")
        self.rest(4426)
        self.see(".notice.error", "The list has just moved")
        self.assertEqual([], self.frames("order.cancel"))

    def test_cancel_all_counts_and_cancels_what_it_shows(self):
        for price in (4420, 4422):
            self.ticket("TA701", "Buy to open", price, 1)
            self.review()
            self.confirm()
            self.gone("dialog")
        self.go("orders")
        self.choose("Account", "80010001")
        self.see(".row", "4,422")
        working = [row["localOrderId"] for row in self.orders(index=1, status=1)]
        self.see(f"button[aria-label='Cancel all {len(working)} working orders']").click()
        self.assertIn(f"Cancel these {len(working)} orders?", self.see("dialog h2").text)
        self.assertEqual(len(working), len(self.found("dialog .asked li")))
        self.rest(4424)  # one that comes now is not among them
        self.wait(lambda: self.run_js("return document.querySelector('.list').innerText.includes('4,424')"), "no push")
        self.assertEqual(len(working), len(self.found("dialog .asked li")))
        self.tap("dialog .primary", f"Cancel {len(working)} orders")
        self.wait(lambda: len(self.orders(index=1, status=1)) == 1, "some still work")
        self.assertEqual([4424], [row["price"] for row in self.orders(index=1, status=1)])
        sent = [frame["data"][0]["localOrderId"] for frame in self.frames("order.cancel")]
        self.assertEqual(sorted(working), sorted(sent))
        self.assertTrue(self.orders(index=2, status=1))

    def test_sync_orders_that_are_alike_are_picked_one_by_one(self):
        self.go("monitor/sync")
        self.see(".row", "500 @")
        alike = self.run_js("return [...document.querySelectorAll('.row')].filter("
                            "(row) => row.innerText.includes('500 @ 3,326')).map((row) => row.getBoundingClientRect().top)")
        self.assertEqual(3, len(alike))
        self.assertEqual(3, len(set(alike)))  # none over another
        self.tap(".row label", "500 @ 3,326")
        self.tap(".stick", "Place 1")
        self.assertEqual(1, len(self.found("dialog .asked li")))
        self.tap("dialog .primary")
        self.gone("dialog")
        sent = self.frames("monitor.sync.order.new")[-1]["data"]
        self.assertEqual([{"index": 1, "hashCode": 1000001, "volume": 500, "price": 3326.0, "side": 1,
                           "combOffsetFlag": 1}], sent)

    def test_manual_positions_are_edited_and_cleared_one_by_one(self):
        def manual():
            return {row["codeExch"]: row["longPos"] for row in self.terminal.call("monitor.manual.list", [])}
        before = manual()
        self.go("monitor/manual")
        self.tap("button[aria-label='Edit 贵州茅台']")
        self.tap("dialog button[aria-label='More Long']")  # by a lot
        self.tap("dialog .primary", "Save")
        self.gone("dialog")
        self.wait(lambda: manual() == {**before, "600519.SSE": 300}, "not saved")
        self.tap("button[aria-label='Clear 贵州茅台']")
        self.tap("dialog .primary", "Clear")
        self.gone("dialog")
        self.wait(lambda: manual() == {code: long for code, long in before.items() if code != "600519.SSE"},
                  "not cleared alone")


if __name__ == "__main__":
    main()
