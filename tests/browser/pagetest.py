#!/usr/bin/python3
"""The web page in a browser, against the built terminal. Usage: pagetest.py POCKET_TERMINAL"""
import pathlib
import signal
import sys
import tempfile
import unittest

from selenium.common.exceptions import StaleElementReferenceException
from selenium.webdriver.common.by import By
from selenium.webdriver.common.keys import Keys
from selenium.webdriver.support.ui import WebDriverWait

from terminal import Terminal, openBrowser

PROGRAM = ""
CHECKS = (pathlib.Path(__file__).parent / "checks.js").read_text()
NAMED = {"button", "link", "textbox", "combobox", "checkbox", "radio", "dialog", "navigation", "meter", "listbox"}
VIEWS = ("assets assets/classes assets/credit assets/margin positions orders orders/fills monitor monitor/sync "
         "monitor/manual settings").split()


class PageTest(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        cls.folder = tempfile.TemporaryDirectory()
        cls.addClassCleanup(cls.folder.cleanup)
        cls.terminal = Terminal(PROGRAM, cls.folder.name + "/data")
        cls.addClassCleanup(lambda: cls.terminal.end())
        cls.browser = openBrowser(cls.folder.name + "/profile")
        cls.addClassCleanup(cls.browser.quit)

    def setUp(self):
        if self.terminal.process.poll() is not None:  # a test that failed left it so
            self.terminal.start()
        self.browser.get("about:blank")
        self.browser.get(self.terminal.link)
        self.see(".link.online")

    def run_js(self, script, *values):
        return self.browser.execute_script(script, *values)

    def wait(self, condition, what):
        patient = WebDriverWait(self.browser, 15, 0.05, ignored_exceptions=[StaleElementReferenceException])
        return patient.until(lambda _: condition(), what)

    # The first element that the selector finds and that has the text.
    def see(self, selector, text=""):
        def found():
            each = self.browser.find_elements(By.CSS_SELECTOR, selector)
            return next((element for element in each if text in element.text), None)
        return self.wait(found, f"{selector} with {text!r} is not there")

    def gone(self, selector):
        self.wait(lambda: not self.browser.find_elements(By.CSS_SELECTOR, selector), f"{selector} is still there")

    def press(self, selector, text=""):
        self.see(selector, text).click()

    def go(self, view):
        self.run_js("location.hash = '#/' + arguments[0]", view)

    def fill(self, label, text):
        field = self.see(f"dialog input[aria-label='{label}']")
        field.send_keys(Keys.CONTROL, "a")
        field.send_keys(text)

    # Up to the last press; by keyboard where that is shorter.
    def ticket(self, price, volume):
        self.press(".tab.trade")
        self.fill("Instrument", "rb2701")
        self.see(".found [role=option]", "rb2701")
        self.see("dialog [role=combobox]").send_keys(Keys.ENTER)
        self.fill("Price", str(price))
        self.fill("Volume", str(volume) + Keys.ENTER)
        return self.see("dialog .primary:enabled", "Confirm: Buy")

    def orders(self, price):
        return [row for row in self.terminal.call("order.list", []) if row["price"] == price]

    def faults(self):
        tree = self.browser.execute_cdp_cmd("Accessibility.getFullAXTree", {})["nodes"]
        nameless = [node["role"]["value"] for node in tree if not node["ignored"] and
                    node["role"]["value"] in NAMED and not node.get("name", {}).get("value")]
        return self.run_js(CHECKS) + [f"no name: {role}" for role in nameless]

    def test_link_logs_in_and_shows_figures(self):
        self.assertNotIn("token", self.browser.current_url)
        equity = next(row for row in self.terminal.call("capital.list", []) if row["index"] == 1)["dynamicAmount"]
        self.see(".equity", f"{equity:,.2f}")
        for view, text in {"positions": "螺纹钢2701", "orders/fills": "3,318 × 4", "assets/margin": "13.00%",
                           "assets/credit": "1,434,1", "monitor/manual": "A60012345"}.items():
            self.go(view)
            self.see(".list", text)
        self.browser.refresh()  # the address has no token any more, the device has
        self.see(".link.online")

    def test_order_is_placed_pushed_and_cancelled(self):
        self.go("orders")
        self.see("[data-list=orders] .row")
        self.run_js("window.isSamePage = true")
        self.run_js("""window.tap = () => {
            const row = [...document.querySelectorAll('.row')].find((each) => each.innerText.includes('3,301 × 2'));
            row?.querySelector('.cancel')?.click();
            return row !== undefined;
            };
            new MutationObserver((_, watch) => { if (tap()) watch.disconnect(); })
                .observe(document.body, {childList: true, subtree: true, characterData: true});""")
        self.ticket(3301, 2).click()
        self.see(".notices", "The list has just moved")
        self.assertIn("Working", self.see(".row", "3,301 × 2").text)
        self.wait(lambda: self.run_js("tap()") or "Cancelled" in self.see(".row", "3,301 × 2").text, "not cancelled")
        self.assertTrue(self.run_js("return window.isSamePage"))
        self.assertEqual([3], [order["status"] for order in self.orders(3301)])

    def test_double_tap_on_review_confirms_nothing(self):
        self.ticket(3304, 1)
        self.press("dialog .actions button", "Edit")
        self.run_js("""document.querySelector('dialog form .primary').click();
            setTimeout(() => { document.querySelector('dialog .primary').click(); window.isTapped = true; }, 100);""")
        self.wait(lambda: self.run_js("return window.isTapped"), "not tapped")
        self.see("dialog .primary:enabled", "Confirm: Buy").send_keys(Keys.ESCAPE)
        self.gone("dialog")
        self.assertIn("trade", self.browser.switch_to.active_element.get_attribute("class"))
        self.assertEqual([], self.orders(3304))

    def test_refusal_shows_its_text(self):
        self.ticket(3500, 500).click()
        self.assertIn("可用资金不足", self.see("dialog [role=alert]").text)

    def test_terminal_goes_and_comes_back(self):
        self.go("positions")
        self.see("[data-list=positions]:not(.stale) .row")
        self.terminal.end()
        self.see(".banner", "Disconnected")
        self.see("[data-list=positions].stale .stale-mark")
        self.assertEqual([], self.faults())
        self.terminal.start()
        self.see("[data-list=positions]:not(.stale) .age", "just now")
        self.gone(".banner")

    def test_order_whose_reply_is_lost_is_found(self):
        self.go("positions")
        confirm = self.ticket(3302, 1)
        self.run_js("window.isDeaf = true")
        confirm.click()
        self.wait(lambda: self.orders(3302), "the order did not reach the terminal")
        self.terminal.end()
        self.see(".outgoing.unknown", "Unknown")
        self.browser.get("about:blank")  # a page that is closed does not forget it
        self.terminal.start()
        self.browser.get(self.terminal.link)
        self.see(".notice", "did arrive")
        self.gone(".outgoing")
        self.assertEqual(1, len(self.orders(3302)))

    def test_order_that_never_arrived_is_sent_again_once(self):
        confirm = self.ticket(3303, 1)
        self.terminal.end(signal.SIGSTOP)
        confirm.click()
        self.see(".outgoing.sending")
        self.terminal.end()
        self.see(".outgoing.unknown")
        self.terminal.start()
        self.see(".outgoing.missing")
        self.assertEqual([], self.orders(3303))
        self.press(".outgoing button", "Send again")
        self.gone(".outgoing")
        self.assertEqual(1, len(self.orders(3303)))

    def test_monitor_places_edits_and_clears(self):
        self.go("monitor/sync")
        self.press(".row label", "au2702")
        self.press(".stick", "Place 1")
        self.press("dialog .primary:enabled")
        self.gone("dialog")
        self.assertEqual(1, len(self.orders(965.14)))
        manual = lambda: {row["codeExch"]: row["longPos"] for row in self.terminal.call("monitor.manual.list", [])}
        before = manual()
        self.go("monitor/manual")
        for button, press, after in (("Edit", "Save", {**before, "600519.SSE": 300}), ("Clear", "Clear", None)):
            self.see(".row", "600519").find_element(By.CSS_SELECTOR, f"button[aria-label^={button}]").click()
            if after:
                self.press("dialog button[aria-label='More Long']")  # by a lot
            self.press("dialog .primary:enabled", press)
            self.gone("dialog")
            after = after or {code: volume for code, volume in before.items() if code != "600519.SSE"}
            self.wait(lambda: manual() == after, f"{after} is not there")

    def test_rights_that_are_missing_are_not_offered(self):
        self.run_js("localStorage.setItem('test-rights', '[\"see\"]')")
        self.browser.refresh()
        self.go("orders")
        self.see(".row", "Working")
        for offered in (".cancel", ".tab.trade"):
            self.assertEqual([], self.browser.find_elements(By.CSS_SELECTOR, offered))
        self.run_js("localStorage.removeItem('test-rights')")

    def test_every_view_fits_and_can_be_read_and_named(self):
        for language, theme in (("en", "light"), ("zh", "dark")):
            scheme = [{"name": "prefers-color-scheme", "value": theme}]
            self.browser.execute_cdp_cmd("Emulation.setEmulatedMedia", {"features": scheme})
            self.go("settings")
            self.press(".settings .choices label", "English" if language == "en" else "中文")
            self.assertTrue(self.run_js("return document.documentElement.lang").startswith(language))
            for view in VIEWS:
                with self.subTest(view=view, theme=theme):
                    self.go(view)
                    self.see(".list:not(.stale) .age" if view != "settings" else ".settings")
                    self.assertEqual([], self.faults())
            self.press(".tab.trade")
            self.see("dialog form")
            self.assertEqual([], self.faults())
            self.browser.switch_to.active_element.send_keys(Keys.ESCAPE)
            self.gone("dialog")
        self.run_js("localStorage.setItem('language', 'en')")

    def test_wrong_token_and_forgetting_lead_to_the_login(self):
        self.go("settings")
        self.press("button", "Forget this device")
        self.see("input[name=token]").send_keys("wrong", Keys.ENTER)
        self.see("[role=alert]", "token")
        self.assertEqual([], self.faults())

    def tearDown(self):
        severe = [entry["message"] for entry in self.browser.get_log("browser") if "ERR_CONNECTION" not in
                  entry["message"] and "WebSocket connection" not in entry["message"]]
        self.assertEqual([], severe)


if __name__ == "__main__":
    PROGRAM = sys.argv.pop(1)
    unittest.main(verbosity=2)
