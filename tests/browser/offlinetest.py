#!/usr/bin/python3
"""The page while the terminal is away, and what it costs to load. Usage: offlinetest.py POCKET_TERMINAL"""
import tempfile
import time
import unittest

from page import PageTest, main
from proxy import NEW, Proxy
from terminal import Terminal, openBrowser, positions


class OfflineTest(PageTest):
    @classmethod
    def setUpClass(cls):
        super().setUpClass()
        cls.proxy = Proxy(cls.terminal)

    # As a device that has never seen the page.
    def open(self):
        self.leave()
        self.browser.execute_cdp_cmd("Storage.clearDataForOrigin", {"origin": self.proxy.origin, "storageTypes": "all"})
        self.browser.execute_cdp_cmd("Network.clearBrowserCache", {})
        self.proxy.isNew = False
        self.proxy.bytes.clear()
        self.browser.get(self.proxy.link())
        self.see(".link.online")

    def leave(self):
        self.browser.get("about:blank")

    def again(self, view="positions"):
        self.leave()
        self.browser.get(f"{self.proxy.origin}/#/{view}")

    def worker(self):
        self.wait(lambda: self.run_js("""return navigator.serviceWorker.getRegistration().then(
            (it) => it?.active?.state === 'activated')"""), "no worker is active")

    def kept(self):
        return self.run_js("""
            const paths = async (name) => (await (await caches.open(name)).keys()).map((each) => new URL(each.url).pathname);
            return caches.keys().then(async (names) => (await Promise.all(names.map(paths))).flat().sort()
                .map((path) => path.replace(/-[0-9A-Z]{8}/, "")))""")

    def names(self):
        return self.run_js("return [...document.querySelectorAll('.row .code b')].slice(0, 8).map((name) => name.innerText)")

    def test_first_load_is_small_and_the_second_only_asks(self):
        self.worker()
        first = dict(self.proxy.bytes)
        self.proxy.bytes.clear()
        self.again()
        self.see(".link.online")
        self.worker()
        second = dict(self.proxy.bytes)
        print(f"{first['file']} bytes at the first load and {first['rest']} once it is drawn, {second} at the second")
        self.assertLess(first["file"], 45_000)
        self.assertGreater(first["rest"], 0)
        self.assertEqual(second["frame"], sum(second.values()))  # the worker's own file is asked about

    def test_page_opens_with_the_last_figures_while_the_terminal_is_away(self):
        self.worker()
        self.go("positions")
        self.see("[data-list=positions]:not(.stale) .row")
        rows = self.names()
        self.leave()  # the figures are kept as the page is closed
        self.terminal.end()
        self.again()
        self.see("[data-list=positions].stale .row")
        self.see(".banner", "out of date")
        self.assertEqual(rows, self.names())
        self.run_js("const now = Date.now; Date.now = () => now() + 3_600_000")
        self.see("[data-list=positions] .age", "as of ")
        self.assertEqual([], self.faults())
        self.go("settings")
        self.see(".settings")
        self.go("positions")
        self.assertEqual(["/", "/app.css", "/app.js", "/app.webmanifest", "/chunk.js", "/icon.svg", "/rest.js"], self.kept())
        self.terminal.start()
        self.see("[data-list=positions]:not(.stale) .row")
        self.go("settings")
        self.tap("button", "Forget this device")
        self.see("input[name=token]")
        self.assertIsNone(self.run_js("return localStorage.getItem('figures')"))
        self.again()
        self.see("input[name=token]")

    def test_new_version_is_used_from_the_next_opening_on(self):
        self.worker()
        self.proxy.isNew = True
        for isNew in (None, True):
            self.again()
            self.see(".link.online")
            self.assertEqual(isNew, self.run_js("return window.isNew"))
            self.wait(lambda: [NEW in name for name in self.run_js("return caches.keys()")] == [True], "no new version")


class MinuteTest(unittest.TestCase):
    # As megabytes an hour: positions in sight while the prices move twice a second.
    def test_positions_cost_little_while_prices_move(self):
        rows = []
        for more, limit in ((0, 5), (77, 15)):
            folder = tempfile.TemporaryDirectory()
            self.addCleanup(folder.cleanup)
            terminal = Terminal(PageTest.program, folder.name + "/data", positions(more), "walk")
            self.addCleanup(terminal.end)
            proxy, browser = Proxy(terminal), openBrowser(folder.name + "/profile")
            self.addCleanup(browser.quit)
            browser.get(proxy.link())
            browser.execute_script("location.hash = '#/positions'")
            rows.append((23 + more, limit, terminal, proxy))
        time.sleep(10)  # the first lists
        before = [proxy.bytes["frame"] for *_, proxy in rows]
        time.sleep(60)
        for (count, limit, terminal, proxy), start in zip(rows, before):
            self.assertEqual(count, len(terminal.call("position.list", [])))
            megabytes = (proxy.bytes["frame"] - start) * 60 / 1e6
            print(f"{count} positions: {megabytes:.1f} MB an hour")
            self.assertTrue(0.01 < megabytes < limit)


if __name__ == "__main__":
    main()
