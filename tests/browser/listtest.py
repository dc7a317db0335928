#!/usr/bin/python3
"""The lists: what they show, sort and filter, and how they bear thousands of rows. Usage: listtest.py POCKET_TERMINAL"""
from selenium.webdriver.common.keys import Keys

from page import PageTest, main, number
from terminal import positions

class ListTest(PageTest):
    def names(self):
        return self.run_js("return [...document.querySelectorAll('.row .code b')].map((name) => name.innerText)")

    def test_figures_are_those_of_the_terminal(self):
        capital = {row["index"]: row for row in self.terminal.call("capital.list", [])}
        today = sum(row["todayFloatingProfit"] + row["closeProfit"] for row in capital.values())
        start = sum(row["preBalance"] + row["deposit"] for row in capital.values())
        self.see(".equity", f"{capital[1]['dynamicAmount']:,.2f}")
        shown = f"{today:+,.2f} {today / start * 100:+.2f}%".replace("-", "−")
        self.see(".sum", shown)
        self.go("positions")  # the same figure under the same name
        self.see(".totals", f"Today's profit {shown}")
        positions = self.terminal.call("position.list", [])
        floating = sum(row["floatPorfit"] for row in positions)
        self.see(".totals", f"Floating profit {floating:+,.2f}".replace("-", "−"))
        self.choose("Account", "A60012345")
        shown = capital[2]["todayFloatingProfit"] + capital[2]["closeProfit"]
        self.see(".totals", f"Today's profit {shown:+,.2f}".replace("-", "−"))
        self.assertEqual({row["codeName"] for row in positions if row["index"] == 2 and row["longPosition"]}, set(self.names()))
        self.tap(".row-main", "贵州茅台")
        row = next(row for row in positions if row["index"] == 2 and row["codeName"] == "贵州茅台")
        fields = dict(zip(*[iter(self.see("dialog .fields").text.split("\n"))] * 2))
        for name, member in (("Floating profit", "floatPorfit"), ("Today's profit", "todayPorfit")):
            self.assertAlmostEqual(row[member], number(fields[name]), 2)
        self.browser.back()
        self.gone("dialog")
        self.choose("Account", "80010001")
        self.tap(".row-main", "铁矿石")  # held short
        fields = dict(zip(*[iter(self.see("dialog .fields").text.split("\n"))] * 2))
        self.assertLess(number(fields["Net market value"]), 0)

    def test_eight_positions_are_seen_one_leg_a_row(self):
        self.go("positions")
        self.see("[data-list=positions] .row")
        seen = self.run_js("""const bottom = document.querySelector('.tabs').getBoundingClientRect().top;
            return [...document.querySelectorAll('.row')].filter(
                (row) => row.getBoundingClientRect().bottom <= bottom + 1).length""")
        self.assertGreaterEqual(seen, 8)
        legs = self.run_js("""return Object.fromEntries([...document.querySelectorAll('.row')].map(
            (row) => [row.querySelector('b').innerText, row.querySelectorAll('.leg').length]))""")
        self.assertEqual((1, 2), (legs["沪金2702"], legs["螺纹钢2701"]))

    def test_positions_are_sorted_by_profit_size_and_name(self):
        self.go("positions")
        self.see("[data-list=positions] .row")
        rows = [row for row in self.terminal.call("position.list", []) if row["longPosition"] + row["shortPosition"]]
        for option, member in (("Floating profit", "floatPorfit"), ("Today's profit", "todayPorfit"),
                               ("Market value", "totalMarketValue")):
            self.choose("Sort by", option)
            expected = [row["codeName"] for row in sorted(rows, key=lambda row: -row[member])][:3]
            self.wait(lambda: self.names()[:3] == expected, f"not sorted by {option}: {self.names()[:3]}")
        self.tap("button[aria-label=descending]")
        expected = min(rows, key=lambda row: row["totalMarketValue"])["codeName"]
        self.wait(lambda: self.names()[0] == expected, "not sorted upwards")
        self.choose("Sort by", "Instrument")
        self.wait(lambda: self.names()[0] == min(self.names()[0], "白糖701", "创业板ETF"), "not sorted by name")

    def test_orders_are_filtered_and_a_refusal_says_why(self):
        self.go("orders")
        self.see(".row", "平安银行")
        for text, status in (("Working", 1), ("Filled", 2), ("Cancelled", 3), ("Refused", 4)):
            self.choose("Status", text)
            rows = self.orders(status=status)
            self.wait(lambda: len(self.found(".row")) == len(rows), f"not the {text} ones")
        refused = self.see(".row", "Price 111 is outside the limits 106.065 to 110.395")
        self.assertIn("委托价格 111 超出涨跌停范围", refused.text)

    def test_quotes_are_starred_searched_followed_and_traded(self):
        def search(text):
            self.see("input[type=search]").send_keys(Keys.CONTROL, "a", Keys.NULL, text or Keys.DELETE)
        self.go("quotes")
        for name in ("五粮液", "宁德时代"):
            search(name)
            self.tap(f".star[aria-label='Star {name}']")
        search("")
        self.wait(lambda: set(self.names()[:2]) == {"五粮液", "宁德时代"}, "the starred are not first")
        self.browser.refresh()
        self.see(".row", "五粮液")
        self.assertEqual({"五粮液", "宁德时代"}, set(self.names()[:2]))
        self.tap(".star[aria-pressed=true][aria-label='Star 宁德时代']")
        self.wait(lambda: "宁德时代" not in self.names()[:2], "the star is still there")
        search("RB27")
        self.wait(lambda: self.names() == ["螺纹钢2701"], f"found {self.names()}")
        self.wait(lambda: [each["data"] for each in self.frames("quote.watch")][-1:] == [[1000001]], "another is watched")
        asked = len(self.frames("quote.list"))
        self.terminal.call("quote.set", {"hashCode": 1000001, "price": 3351})
        self.see(".row-main", "3,350 / 3,352")
        self.assertEqual(asked, len(self.frames("quote.list")))
        self.tap(".row-main", "螺纹钢2701")
        self.see("dialog .combo > button", "rb2701")
        self.browser.back()
        self.gone("dialog")
        self.terminal.call("quote.set", {"hashCode": 1000001, "price": 3325})

    def test_an_alert_is_set_and_shown_once_even_if_it_fires_while_the_page_is_closed(self):
        bell = ".row .bell[aria-label^='Alerts: 螺纹钢2701']"
        def move(price):
            self.terminal.call("quote.set", {"hashCode": 1000001, "price": price})
        def cleared(count):
            self.wait(lambda: self.run_js("return heard.filter((each) => each === 'alert.clear').length") >= count, "not cleared")
        self.addCleanup(move, 3325)
        self.go("quotes")
        self.tap(bell)
        for price, condition in (("3340", "≥ 3,340"), ("3290", "≤ 3,290"), ("3400", "≥ 3,400")):
            self.fill("alert-price", price)
            self.tap("dialog .primary", "Set alert")
            self.see("dialog .alert", condition)
        self.tap("dialog .alert [aria-label='Delete alert: ≥ 3,400']")
        self.wait(lambda: len(self.found("dialog .alert")) == 2, "not deleted")
        self.fill("alert-price", "3330.5")
        self.see("dialog .wrong", "a multiple of 1.")
        self.browser.back()
        self.gone("dialog")
        self.see(f"{bell}[aria-label$='2 set'].lit")
        move(3341)
        self.see(".notice.alert", "Alert: 螺纹钢2701 ≥ 3,340, reached 3,341 at ")
        cleared(2)
        self.open()
        self.go("quotes")
        self.see(f"{bell}[aria-label$='1 set']")
        self.assertEqual([], self.found(".notice"))
        self.browser.get("about:blank")
        move(3290)
        self.open()
        self.tap("button.notice-text", "Alert: 螺纹钢2701 ≤ 3,290, reached 3,290 at ")
        self.see("dialog h2", "Alerts: 螺纹钢2701")
        cleared(1)
        self.browser.back()
        self.gone("dialog")
        self.open()
        self.go("quotes")
        self.see(f"{bell}:not(.lit)")

    def test_language_and_colours_are_remembered(self):
        self.go("settings")
        color = "return getComputedStyle(document.documentElement).getPropertyValue('--gain')"
        red = self.run_js(color)
        self.tap(".settings .choices label", "Green up")
        self.wait(lambda: self.run_js(color) != red, "the colours did not change")
        self.tap(".settings .choices label", "中文")
        self.browser.refresh()
        self.see("h1", "设置")
        self.assertNotEqual(red, self.run_js(color))
        self.tap(".settings .choices label", "红涨绿跌")
        self.tap(".settings .choices label", "English")
        self.see("h1", "Settings")


# Scrolls, and counts the rows that are made and taken away meanwhile.
SCROLL = """
const done = arguments[arguments.length - 1];
const step = () => new Promise((next) => requestAnimationFrame(next));
let made = 0;
let most = 0;
new MutationObserver((changes) => {
    made += changes.reduce((sum, { addedNodes }) => sum + addedNodes.length, 0);
    most = Math.max(most, document.querySelectorAll('.row').length);
}).observe(document.querySelector('.rows'), {childList: true});
(async () => {
    for (let at = 0; at < 100; ++at) {
        scrollBy(0, 120);  // a quick flick
        await step();
    }
    await step();
    done({made, most, at: scrollY, seen: document.querySelector('.row:last-child').innerText,
          place: Number(document.querySelector('.row:last-child').getAttribute('aria-posinset'))});
})();"""


class LongListTest(PageTest):
    change = positions(5000)

    def test_a_scroll_through_five_thousand_positions_makes_each_row_once(self):
        self.go("positions")
        self.see(".row")
        self.choose("Account", "80010001")
        self.see(".age", "5007")  # one of the sample has an order only
        result = self.browser.execute_async_script(SCROLL)
        self.assertGreater(result["at"], 11_000)
        self.assertIn("合约", result["seen"])
        self.assertLess(result["most"], 60)
        self.assertLessEqual(result["made"], result["place"])


if __name__ == "__main__":
    main()
