#!/usr/bin/python3
"""Every view at every size: nothing cut, nothing beside the screen, all of it readable. Usage: fittest.py POCKET_TERMINAL"""
from page import CHECKS, PageTest, VIEWS, main
from terminal import resize

# Volumes of six digits and amounts of nine.
LARGE = """
    UPDATE instrument SET max_volume = 1000000;
    UPDATE account SET pre_balance = 123456789.12, online = 1;
    UPDATE holding SET yesterday_volume = 123456, yesterday_closed = 0 WHERE account IN (2, 4);
    UPDATE holding SET yesterday_volume = 123456, yesterday_closed = 0, yesterday_price = 3000
        WHERE account = 1 AND hash_code = 1000001;
    UPDATE orders SET volume = 123456 WHERE status <> 2;
    UPDATE orders SET volume = 123456, fill_volume = 123456 WHERE id = 1008;
    UPDATE fill SET volume = 123456 WHERE order_id = 1008;
    INSERT INTO account SELECT 5, 'N0050005', 1, 1, 1, 1, 1, 923456789, 0, 0, 0;
    UPDATE strategy_target SET long_volume = 234567 WHERE hash_code IN (6000001, 1000001);
    UPDATE manual_position SET long_volume = 345678, short_volume = 345678;"""

# The narrowest phones, a usual one and a large one. No style depends on the width below a tablet's, so what fits these
# fits those between. Widths next to each other differ, as rows are measured anew for each.
SIZES = ((360, 16), (288, 16), (412, 24), (288, 24))
ENDS = (SIZES[0], SIZES[-1])  # what fits these in another language, or in a dialog of the same parts, fits the others
TABLES = "positions quotes orders orders/fills monitor monitor/sync monitor/manual".split()
TALL = 2400  # all rows of a view are in sight

CHECKED = """const frame = () => new Promise(requestAnimationFrame);
    const check = () => (function () { %s })(arguments[1]);
    return until(() => innerWidth === arguments[0], 60000).then(frame).then(frame).then(check);""" % CHECKS


class FitTest(PageTest):
    change = LARGE

    def load(self, language, theme):
        scheme = [{"name": "prefers-color-scheme", "value": theme}]
        self.browser.execute_cdp_cmd("Emulation.setEmulatedMedia", {"features": scheme})
        self.run_js("localStorage.setItem('language', arguments[0]); localStorage.removeItem('drafts')", language)
        self.open()

    def show(self, view):
        self.go(view)
        name = "capital" if view == "assets" else view.split("/")[-1]
        self.see(".settings" if view == "settings" else f"[data-list={name}]:not(.stale) :is(.row, .card)")
        self.gone(".stale-mark")
        if picture := {"positions": ".spark", "quotes": ".spark", "assets/classes": ".bars"}.get(view):
            self.see(picture)

    # Whether what is there fits, at each size. All else is checked at the first.
    def note(self, name, sizes=ENDS, height=740):
        for width, root in sizes:
            self.run_js("document.documentElement.style.fontSize = arguments[0] + 'px'", root)
            resize(self.browser, width, height)
            faults = self.run_js(CHECKED, width, "" if (width, root) == sizes[0] else "fit")
            self.assertEqual([], faults, f"{name} at {width} pixels and {root} for a letter")
        self.run_js("document.documentElement.style.fontSize = ''")
        resize(self.browser, 360, 740)

    def back(self):
        self.browser.back()
        self.gone("dialog")

    def test_nothing_is_cut_and_everything_can_be_read_and_touched(self):
        for language, theme, sizes in (("en", "light", SIZES), ("zh", "dark", ENDS)):
            with self.subTest(language=language, theme=theme):
                self.walk(language, theme, sizes)

    def walk(self, language, theme, sizes):
        self.load(language, theme)
        for view in VIEWS:
            self.show(view)
            self.run_js("for (const details of document.querySelectorAll('details')) details.open = true")
            self.note(view, sizes, TALL)
            if view != "quotes" and self.found("button.row-main"):  # a tap on a quote fills in the ticket
                self.tap("button.row-main")
                self.see("dialog .panel-body")
                self.note(f"{view} row", sizes)
                self.back()
        self.show("monitor/sync")
        self.tap(".row label")
        self.tap(".stick")
        self.see("dialog .asked")
        self.note("sync question", sizes)
        self.back()
        self.tap(".tab.trade")
        self.see(".found [role=option]")
        self.note("instruments", sizes)
        self.tap(".found [role=option]", "rb2701")
        self.see("dialog .facts")
        self.wait(lambda: "–\n" not in self.see("dialog .facts").text, "no rates")
        self.fill("volume", "123456")
        self.see("dialog .facts", "123,456")
        self.note("filled ticket", sizes)
        self.tap("dialog .primary")
        self.see("dialog .confirm")
        self.note("confirmation", sizes)

    # Opens a dialog by a button of the page or of the dialog before, and checks it.
    def opens(self, selector, text, sign, isLast=True):
        self.tap(selector, text)
        self.see(f"dialog {sign}")
        self.gone("dialog .stale")
        self.note(f"{text} {sign}")
        if isLast:
            self.go("settings")
            self.gone("dialog")

    def test_notices_and_dialogs_are_not_cut(self):
        order = {"index": 5, "hashCode": 3000001, "side": 1, "combOffset": 1, "priceType": 2, "price": 0, "offset": 0,
                 "volume": 12345, "insertTimestamp": 1, "source": "another"}
        for language in ("en", "zh"):
            with self.subTest(language=language):
                self.load(language, "light")
                self.show("positions")
                self.terminal.call("order.new", {"orderList": [order]})
                self.see(".notice.fill")
                self.note("notice")
                self.opens(".row-main", "螺纹钢", ".actions")  # the notice is above each dialog
                self.show("positions")
                self.opens(".row-main", "铁矿石", ".actions", False)
                self.opens("dialog .actions button:last-child", "", ".confirm", False)
                self.opens("dialog .actions button:first-of-type", "", "#price", False)
                self.fill("price", "765.2")
                self.fill("volume", "123456")
                self.opens("dialog .primary", "", ".wrong", False)
                self.opens("dialog .choices label:nth-child(2)", "", ".ticket", False)
                self.fill("price", "710")
                self.fill("volume", "123456")
                self.opens("dialog .primary", "", ".reasons")
                self.show("orders")
                self.opens("button.danger", "", ".asked")
                self.show("orders")
                self.opens(".row-main", "", ".actions", False)
                self.opens("dialog .actions .primary", "", ".quotes")
                self.show("quotes")
                self.passes(8)
                self.gone(".notice")
                self.opens(".row .bell", "", "#alert-price", False)
                self.fill("alert-price", "234.565" if language == "en" else "234.57")
                self.opens("dialog .primary", "", ".alert")
                self.show("quotes")
                self.opens(".list-head .bell", "", ".alert")
                for button in (".tools button.small", ".row-actions button", ".row-actions button:last-child"):
                    self.show("monitor/manual")
                    self.opens(button, "", ".actions")

    def test_tables_have_headings_that_sort_at_1280(self):
        resize(self.browser, 1280, 800, False)
        for view in TABLES:
            self.show(view)
            self.assertEqual([], self.faults("fit"), view)
        resize(self.browser, 360, 740)
        self.open()
        self.go("positions")
        self.see(".row")
        resize(self.browser, 1280, 800, False)  # as a phone that is turned becomes a table
        self.see(".headings")
        heights = self.run_js("return [...document.querySelectorAll('.row')].map((row) => row.offsetHeight)")
        self.assertLess(sorted(heights)[len(heights) // 2], 90)
        for heading, member in (("Floating profit", "floatPorfit"), ("Market value", "totalMarketValue")):
            self.tap(".headings button", heading)
            rows = sorted(self.terminal.call("position.list", []), key=lambda row: -row[member])
            first = next(row for row in rows if row["longPosition"] + row["shortPosition"] > 0)
            self.wait(lambda: first["codeName"] in self.see(".row").text, f"{first['codeName']} is not first")
            column = self.see(f"[role=columnheader][aria-sort=descending]")
            self.assertIn(heading, column.text)
        for view in TABLES:
            self.go(view)
            self.see(f"[data-list={view.split('/')[-1]}] .row")
            columns = self.run_js("""return [...document.querySelectorAll('.headings, .row')].map((row) =>
                [...row.querySelectorAll('.cell')].map((cell) => Math.round(cell.getBoundingClientRect().right)).join())""")
            self.assertEqual(1, len(set(columns)), f"columns of {view} are not below each other")
            texts = self.run_js("""return [...document.querySelectorAll('.row-actions button, .headings .cell')].filter(
                (each) => each.getClientRects().length && each.scrollHeight > 46).map((each) => each.innerText)""")
            self.assertEqual([], texts, f"{view} wraps")


if __name__ == "__main__":
    main()
