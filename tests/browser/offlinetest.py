#!/usr/bin/python3
"""The page while the terminal is away, and what it costs to load. Usage: offlinetest.py POCKET_TERMINAL"""
import tempfile

from page import PageTest, main
from proxy import NEW, Proxy
from terminal import Terminal, positions


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


class CostTest(PageTest):
    def setUp(self):
        pass

    # Bytes of an hour in which the prices move twice a second, each move is pushed, and lists are asked for each minute.
    def hour(self, more):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        terminal = Terminal(self.program, folder.name, positions(more), "walk")
        self.addCleanup(terminal.end)
        self.assertEqual(23 + more, len(terminal.call("position.list", [])))
        proxy = Proxy(terminal)
        self.browser.get(proxy.link())
        self.go("positions")
        self.see("[data-list=positions] .row")
        def heard(topic):
            return self.run_js("return heard.filter((each) => each === arguments[0]).length", topic)
        def each(topic, count, skipped):
            start, before = heard(topic), proxy.bytes["frame"]
            self.run_js("pass(arguments[0], arguments[0])", skipped)
            self.wait(lambda: heard(topic) >= start + count, f"no {topic}")
            return (proxy.bytes["frame"] - before) / (heard(topic) - start)
        each("quote.push", 2, 0)  # all lists of the start have come
        asked = len(self.frames("position.list"))
        pushed = each("quote.push", 6, 50)
        self.assertEqual(asked, len(self.frames("position.list")))
        return pushed * 7200 + each("position.list", 1, 60) * 60

    def test_positions_cost_little_while_prices_move(self):
        for more, limit in ((0, 5), (77, 15)):
            megabytes = self.hour(more) / 1e6
            print(f"{23 + more} positions: {megabytes:.1f} MB an hour")
            self.assertTrue(0.01 < megabytes < limit)


if __name__ == "__main__":
    main()
