"""What the tests of the page have in common: a terminal, a browser, and a trader's hands and eyes."""
import pathlib
import sys
import tempfile
import time
import unittest

from selenium.common.exceptions import JavascriptException, StaleElementReferenceException
from selenium.webdriver.common.by import By
from selenium.webdriver.support.ui import WebDriverWait

from terminal import Terminal, openBrowser, resize

HERE = pathlib.Path(__file__).parent
CHECKS = (HERE / "checks.js").read_text()
PATIENCE = 60
VIEWS = ("assets assets/equity assets/classes assets/credit assets/margin positions quotes orders orders/fills monitor "
         "monitor/sync monitor/manual settings").split()
SIDES = {"Buy": 1, "Sell": 2, "Margin buy": 3, "Short sell": 4, "Buy to return": 5, "Sell to repay": 6}
OFFSETS = {"": 0, "to open": 1, "to close": 4, "to close today's": 5, "to close yesterday's": 6}
DEALS = {f"{side} {offset}".strip(): (SIDES[side], OFFSETS[offset])
         for side in SIDES for offset in OFFSETS if not offset or side in ("Buy", "Sell")}


def number(text):
    return float(text.replace(",", "").replace("−", "-"))


class PageTest(unittest.TestCase):
    change = ""  # SQL on the sample book
    program = ""

    @classmethod
    def setUpClass(cls):
        folder = tempfile.TemporaryDirectory()
        cls.addClassCleanup(folder.cleanup)
        cls.terminal = Terminal(cls.program, folder.name, cls.change)
        cls.addClassCleanup(lambda: cls.terminal.end())

    def setUp(self):
        if self.terminal.process.poll() is not None:  # a test that failed left it so
            self.terminal.start()
        self.taps = 0
        resize(self.browser, 360, 740)
        self.open()

    # As if the link were opened, if possible in the place of the page that is there.
    def open(self):
        isThere = self.run_js("""if (!arguments[0].startsWith(location.origin)) return false;
            history.scrollRestoration = "manual";
            history.replaceState(null, "", arguments[0]);
            return true;""", self.terminal.link)
        self.browser.refresh() if isThere else self.browser.get(self.terminal.link)
        self.see(".link.online")

    def run_js(self, script, *values):
        return self.browser.execute_script(script, *values)

    def wait(self, condition, what):
        patient = WebDriverWait(self.browser, PATIENCE, 0.03, ignored_exceptions=[StaleElementReferenceException])
        return patient.until(lambda _: condition(), what)

    # Calls an operation of inside.js until it has found what it needs; again if the page is replaced meanwhile.
    def do(self, name, *values):
        end = time.monotonic() + PATIENCE
        why = ""
        while (left := end - time.monotonic()) > 0:
            try:
                if result := self.run_js("return window[arguments[0]](...arguments[1])", name, [left * 1000, *values]):
                    return result
            except JavascriptException as error:
                why = error.msg
        shown = self.run_js("return document.body.innerText")
        self.fail(f"cannot {name} {values} {why}; the page shows {shown[:1000]!r}")

    # So many seconds, at once.
    def passes(self, seconds):
        self.run_js("return pass(arguments[0])", seconds)

    def found(self, selector):
        return self.browser.find_elements(By.CSS_SELECTOR, selector)

    # The first element that the selector finds and that has the text.
    def see(self, selector, text=""):
        return self.do("see", selector, text)

    def gone(self, selector):
        self.do("gone", selector)

    def tap(self, selector, text=""):
        self.taps += 1
        self.do("tap", selector, text, str(time.monotonic()))

    def go(self, view):
        self.run_js("location.hash = '#/' + arguments[0]", view)

    def fill(self, field, text):
        self.do("fill", f"dialog #{field}", text)

    def choose(self, label, text):
        self.do("choose", label, text)

    # The ticket, up to its review.
    def ticket(self, code, action="", price=None, volume=None, account="80010001", market=False):
        self.tap(".tab.trade")
        self.see("dialog .ticket")
        self.choose("Account", account)
        if self.found("dialog .combo > button"):
            self.tap("dialog .combo > button")
        self.fill("instrument", code)
        self.tap(".found [role=option]", code)
        if action:
            self.tap("dialog .choices label", action)
        if market:
            self.choose("Price type", "Market")
        if price is not None:
            self.fill("price", str(price))
        if volume is not None:
            self.fill("volume", str(volume))

    def review(self):
        self.tap("dialog .primary", "Review")
        self.see("dialog .confirm")
        return self.confirmed()

    # What the confirmation says once it knows the rates.
    def confirmed(self):
        lines = dict(self.wait(lambda: self.run_js("""
            const lines = [...document.querySelectorAll('dialog .confirm > div')].map(
                (line) => [line.querySelector('dt').innerText, line.querySelector('dd').innerText]);
            return lines.some(([, value]) => value === '–') ? [] : lines"""), "no rates"))
        return {**lines, "Deal": self.see("dialog .headline").text.rsplit(" ", 1)[0]}

    def action(self):
        return self.run_js("return document.querySelector('dialog .choices input:checked + span').innerText")

    def confirm(self):
        self.tap("dialog .actions button.buy, dialog .actions button.sell")

    def frames(self, topic):
        return self.run_js("return window.sent.filter((frame) => frame.topic === arguments[0])", topic)

    # That the order sent is the order shown, by names on the screen and numbers on the wire.
    def assertSent(self, said, place=-1):
        sent = self.frames("order.new")[place]["data"]["orderList"][0]
        self.assertEqual(said["Account"].split(" ")[0], self.terminal.accounts[sent["index"]])
        self.assertTrue(said["Instrument"].endswith(self.terminal.codes[sent["hashCode"]]), (said, sent))
        self.assertEqual(DEALS[said["Deal"]], (sent["side"], sent["combOffset"]))
        self.assertEqual(number(said["Volume"]), sent["volume"])
        kind, price = said["Price"].replace("≈ ", "").split(" ")
        self.assertEqual({"Limit": (1, number(price)), "Market": (2, 0)}[kind], (sent["priceType"], sent["price"]))
        return sent

    def orders(self, **wanted):
        rows = self.terminal.call("order.list", [])
        return [row for row in rows if all(row[name] == value for name, value in wanted.items())]

    def faults(self, *checks):
        return self.run_js(CHECKS, *checks)

    def tearDown(self):
        severe = [entry["message"] for entry in self.browser.get_log("browser") if "ERR_CONNECTION" not in
                  entry["message"] and "WebSocket connection" not in entry["message"]]
        self.run_js("localStorage.clear()")
        self.assertEqual([], severe)


def main():
    PageTest.program = sys.argv.pop(1)
    with openBrowser() as PageTest.browser:
        unittest.main(verbosity=2)
