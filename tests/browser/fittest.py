#!/usr/bin/python3
"""Every view at every size: nothing cut, nothing beside the screen, all of it readable. Usage: fittest.py POCKET_TERMINAL"""
import json

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

# Walks through the views and dialogs in the page itself, checking each, and returns what is wrong with which.
WALK = """
const done = arguments[arguments.length - 1];
const [views, checks] = arguments;
const check = new Function(checks);
const until = (condition) => new Promise((seen) => {
    const look = () => (condition() ? requestAnimationFrame(() => requestAnimationFrame(seen)) : setTimeout(look, 15));
    look();
});
const find = (selector) => document.querySelector(selector);
const faults = {};
const note = (name) => {
    const found = [...check("fit"), ...(checks.includes("isAll") ? check() : [])];
    if (found.length > 0) faults[name] = found;
};
const dialog = async (name, open) => {
    open();
    await until(() => find("dialog .panel-body")?.innerText);
    note(name);
    history.back();
    await until(() => !find("dialog"));
};
// Its own list with its rows: the one before is there for a moment, and so is its heading without rows.
const show = (view) => {
    location.hash = "#/" + view;
    const name = view === "assets" ? "capital" : view.split("/").pop();
    const picture = {positions: ".spark", "assets/classes": ".bars"}[view];
    return until(() => view === "settings" ? find(".settings")
        : find(`[data-list=${name}]:not(.stale) :is(.row, .card)`) && !find(".stale-mark") && (!picture || find(picture)));
};
(async () => {
    for (const view of views) {
        await show(view);
        for (const details of document.querySelectorAll("details")) details.open = true;
        note(view);
        for (let at = innerHeight; at < document.documentElement.scrollHeight; at += innerHeight) {
            scrollTo(0, at);
            await until(() => true);
            note(`${view} below`);
        }
        const row = find("button.row-main");
        if (row) await dialog(`${view} row`, () => row.click());
    }
    await show("monitor/sync");
    find(".row input").click();
    await until(() => find(".stick"));
    await dialog("sync question", () => find(".stick").click());
    await show("positions");
    await dialog("ticket", () => find(".tab.trade").click());
    find(".tab.trade").click();
    await until(() => find(".found [role=option]"));
    note("instruments");
    [...document.querySelectorAll(".found [role=option]")].find((each) => each.innerText.includes("rb2701")).click();
    await until(() => find("dialog .facts"));
    await until(() => !find("dialog .facts").innerText.includes("–\\n"));
    const volume = find("#volume");
    volume.value = "123456";
    volume.dispatchEvent(new Event("input", {bubbles: true}));
    await until(() => find("dialog .facts").innerText.includes("123,456"));
    note("filled ticket");
    find("dialog .primary").click();
    await until(() => find("dialog .confirm"));
    note("confirmation");
    done(faults);
})().catch((error) => done({failed: [String(error)]}));
"""


class FitTest(PageTest):
    change = LARGE

    def load(self, language, root):
        self.run_js("localStorage.setItem('language', arguments[0]); localStorage.removeItem('drafts')", language)
        self.browser.get("about:blank")
        self.browser.get(self.terminal.link.split("#")[0])
        self.run_js("document.documentElement.style.fontSize = arguments[0] + 'px'", root)
        self.see(".link.online")

    def walk(self, views, language, root=16, theme="light", isAll=False):
        scheme = [{"name": "prefers-color-scheme", "value": theme}]
        self.browser.execute_cdp_cmd("Emulation.setEmulatedMedia", {"features": scheme})
        self.load(language, root)
        self.browser.set_script_timeout(60)
        checks = CHECKS + ("// isAll" if isAll else "")
        return self.browser.execute_async_script(WALK, views, checks)

    def test_nothing_is_cut_at_any_size(self):
        for language in ("en", "zh"):
            for width in (288, 320, 360, 412):
                for root in (16, 24):
                    with self.subTest(language=language, width=width, root=root):
                        resize(self.browser, width, 740)
                        faults = self.walk(VIEWS, language, root)
                        self.assertEqual({}, faults, json.dumps(faults, indent=1, ensure_ascii=False))

    # Opens a dialog by a button of the page or of the dialog before, and checks it.
    def opens(self, selector, text, sign, isLast=True):
        found = self.see(selector, text)
        self.run_js("arguments[0].click()", found)
        self.see(f"dialog {sign}")
        self.gone("dialog .stale")
        faults = self.faults("fit")
        self.assertEqual([], faults, f"{text} {sign}")
        if isLast:
            self.go("settings")
            self.gone("dialog")

    def test_notices_and_dialogs_are_not_cut(self):
        order = {"index": 5, "hashCode": 3000001, "side": 1, "combOffset": 1, "priceType": 2, "price": 0, "offset": 0,
                 "volume": 12345, "insertTimestamp": 1, "source": "another"}
        for language, width, root in (("en", 288, 24), ("zh", 288, 24), ("en", 360, 16)):
            with self.subTest(language=language, width=width, root=root):
                resize(self.browser, width, 740)
                self.load(language, root)
                def show(view, sign=".row"):
                    self.go(view)
                    self.see(f"[data-list={view.split('/')[-1]}]:not(.stale) {sign}")
                show("positions")
                self.terminal.call("order.new", {"orderList": [order]})
                self.see(".notice.fill")
                self.assertEqual([], self.faults("fit"))
                self.opens(".row-main", "螺纹钢", ".actions")  # the notice is above each dialog
                show("positions")
                self.opens(".row-main", "铁矿石", ".actions", False)
                self.opens("dialog .actions button:last-child", "", ".confirm", False)
                self.opens("dialog .actions button:first-of-type", "", "#price", False)
                self.fill("price", "765.2")
                self.fill("volume", "123456")
                self.opens("dialog .primary", "", ".wrong", False)
                self.opens("dialog .choices label:nth-child(2) input", "", ".ticket", False)
                self.fill("price", "710")
                self.fill("volume", "123456")
                self.opens("dialog .primary", "", ".reasons")
                show("orders")
                self.opens("button.danger", "", ".asked")
                show("orders")
                self.opens(".row-main", "", ".actions", False)
                self.opens("dialog .actions .primary", "", ".quotes")
                for button in (".tools button.small", ".row-actions button", ".row-actions button:last-child"):
                    show("monitor/manual")
                    self.opens(button, "", ".actions")

    def test_everything_can_be_read_and_touched_in_both_themes(self):
        for language, theme in (("en", "light"), ("zh", "dark")):
            with self.subTest(language=language, theme=theme):
                faults = self.walk(VIEWS, language, theme=theme, isAll=True)
                self.assertEqual({}, faults, json.dumps(faults, indent=1, ensure_ascii=False))

    def test_tables_have_headings_that_sort_at_1280(self):
        resize(self.browser, 1280, 800, False)
        self.assertEqual({}, self.walk(["positions", "orders", "orders/fills", "monitor", "monitor/manual"], "en"))
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
        for view in ("positions", "orders", "orders/fills", "monitor", "monitor/sync", "monitor/manual"):
            self.go(view)
            self.see(f"[data-list={view.split('/')[-1]}] .row")
            columns = self.run_js("""return [...document.querySelectorAll('.headings, .row')].map((row) =>
                [...row.querySelectorAll('.cell')].map((cell) => Math.round(cell.getBoundingClientRect().right)).join())""")
            self.assertEqual(1, len(set(columns)), f"columns of {view} are not below each other")
            texts = self.run_js("""return [...document.querySelectorAll('.row-actions button, .headings .cell')].filter(
                (each) => each.getClientRects().length && each.scrollHeight > 46).map((each) => each.innerText)""")
            self.assertEqual([], texts, f"{view} wraps")

    def tearDown(self):
        self.run_js("localStorage.setItem('language', 'en')")
        super().tearDown()


if __name__ == "__main__":
    main()
