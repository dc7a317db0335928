#!/usr/bin/python3
"""The pictures: what they show is what the terminal says. Usage: picturetest.py POCKET_TERMINAL"""
import time

from page import PageTest, main, number

# A minute of 30 days and a day of the year before, with a deposit; the risk of account 1 beyond 80 %.
YEAR = """
    DELETE FROM equity;
    WITH RECURSIVE n (n) AS (SELECT 1 UNION ALL SELECT n + 1 FROM n WHERE n < 43200)
    INSERT INTO equity SELECT 1, unixepoch() / 60 * 60000 - n * 60000, unixepoch() / 86400 - n / 1440,
        1000000 + (n * 7919) % 50000 + 100000 * (n < 20000), 0, 0, 0,
        100000 * (n BETWEEN 20000 - 20000 % 1440 AND 20000), 0 FROM n;
    WITH RECURSIVE n (n) AS (SELECT 31 UNION ALL SELECT n + 1 FROM n WHERE n < 365)
    INSERT INTO equity SELECT 1, (unixepoch() / 60 - n * 1440) * 60000, unixepoch() / 86400 - n, 1000000 + (n * 7919) % 50000,
        0, 0, 0, 0, 0 FROM n;
    UPDATE account SET deposit = 0 WHERE idx = 1;
    UPDATE holding SET today_volume = 200, today_price = 3325
        WHERE account = 1 AND hash_code = 1000001 AND direction = 1;"""

class PictureTest(PageTest):
    change = YEAR

    def equity(self, days):
        now = int(time.time() * 1000)
        return self.terminal.call("equity.list", {"index": 1, "from": now - days * 86_400_000, "to": now + 60_000, "points": 240})

    def test_a_year_is_one_line_of_as_many_points_as_are_asked_for(self):
        self.go("assets/equity")
        self.tap(".periods label", "Year")
        def drawn():
            asked = self.frames("equity.list")[-1]["data"]
            points = self.see(".curve .line-of").get_attribute("d").count("L") + 1
            return asked["to"] - asked["from"] > 366 * 86_400_000 and points == len(self.terminal.call("equity.list", asked)) <= 240
        self.wait(drawn, "not the points of the answer")
        self.assertLess(self.run_js("return document.querySelectorAll('.picture *').length"), 100)

    def test_equity_and_its_payments_are_those_of_the_terminal(self):
        self.go("assets/equity")
        self.see(".curve")
        self.tap(".periods label", "Month")
        rows = self.wait(lambda: self.equity(30) if "Deposit" in self.see(".picture").text else None, "no deposit")
        self.see(".payments", "+100,000.00")
        self.assertEqual(number(self.see(".picture .equity").text), round(rows[-1]["equity"], 2))
        self.assertEqual(1, len(self.found(".plot .paid.in")))
        label = self.see(".plot svg").get_attribute("aria-label")
        lowest = min(row["equity"] for row in rows)
        self.assertIn(f"lowest {lowest:,.2f}", label)
        self.tap(".behind summary")
        self.wait(lambda: len(self.found(".behind tbody tr")) in (30, 31, 32), "the table has no row for each day")
        self.choose("Account", "A60012345")
        self.wait(lambda: not self.found(".payments"), "another account's payments are shown")

    def test_meters_and_bars_show_what_is_held(self):
        capital = {row["index"]: row for row in self.terminal.call("capital.list", [])}
        self.assertTrue(0.8 < capital[1]["risk"] < 0.95, capital[1]["risk"])
        self.see(".limit.near", "Near the limit")
        credit = self.terminal.call("creditinfo.list", [4])[0]["creditInfo"][0]
        self.see(".limit", f"Maintenance ratio {credit['marginRatio'] * 100:.2f}%")
        self.go("assets/classes")
        self.see(".bars")
        widths = {}
        for name, side, width in self.run_js("""return [...document.querySelectorAll('.bars:nth-child(2) li')].flatMap((row) =>
                [...row.querySelectorAll('rect')].map((bar) =>
                    [row.querySelector('b').innerText, bar.getAttribute('class'), bar.getBoundingClientRect().width]))"""):
            widths[name, side] = width
        rows = self.terminal.call("position.list", [])
        gold = next(row for row in rows if row["codeExch"] == "au2702.SHFE")
        copper = next(row for row in rows if row["codeExch"] == "cu2701.SHFE")
        self.assertAlmostEqual(widths["沪金2702", "of-long"] / widths["沪铜2701", "of-short"],
                               gold["longMarketValue"] / copper["shortMarketValue"], 1)

    def test_a_curve_ends_at_the_price_of_its_row(self):
        self.go("positions")
        self.see(".spark svg")
        self.terminal.call("quote.set", {"hashCode": 1000002, "price": 970.02})
        self.passes(3)
        spark = lambda: next(row for row in self.found(".row") if "沪金2702" in row.text).find_element("css selector", "svg")
        self.wait(lambda: "last 970.02" in spark().get_attribute("aria-label"), "the curve stays behind")
        self.tap(".row-main", "沪金2702")
        self.see("dialog .curve", "970.02")


if __name__ == "__main__":
    main()
