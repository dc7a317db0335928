#!/usr/bin/python3
"""How fast the page is, beside plain pages that show the same in the same run. Usage: page.py POCKET_TERMINAL [OPTION]...
Writes Markdown. With --check it exits with 1 if a figure misses its must."""
import argparse
import contextlib
import http.server
import json
import pathlib
import re
import statistics
import sys
import threading
import time
import urllib.request

sys.path.insert(0, str(pathlib.Path(__file__).parents[1] / "tests/browser"))
from page import PageTest
from picturetest import YEAR
from terminal import openBrowser, positions

KILOBIT = 1000 / 8
SLOW = {"offline": False, "latency": 100, "downloadThroughput": 1600 * KILOBIT, "uploadThroughput": 750 * KILOBIT}
STYLE = "return [...document.styleSheets].flatMap((sheet) => [...sheet.cssRules].map((rule) => rule.cssText)).join('')"
FRAME = "const frame = () => new Promise((next) => requestAnimationFrame(next)); const done = arguments[arguments.length - 1];"

# A quick flick through the list.
SCROLL = FRAME + """(async () => {
    for (let at = 0; at < arguments[0]; ++at) {
        scrollBy(0, 120);
        await frame();
    }
    done();
})();"""

# From a month to a year and back, each until it is seen.
SWITCH = FRAME + """const line = () => document.querySelector(".curve .line-of")?.getAttribute("d");
(async () => {
    for (let at = 0; at < arguments[0]; ++at) {
        const before = line();
        document.querySelector('.periods label:nth-child(n + 3):has(input:not(:checked))').click();
        while (!line() || line() === before) await frame();
        await frame();
    }
    done();
})();"""

# Each frame has a push of prices, each the other way from the one before.
PUSH = FRAME + """(async () => {
    const [times, pushes] = arguments;
    for (let at = 0; at < times; ++at) {
        socket.dispatchEvent(new MessageEvent("message", {data: pushes[at % pushes.length]}));
        await frame();
    }
    done();
})();"""
SOCKET = """WebSocket = class extends WebSocket {
    constructor(...values) {
        super(...values);
        window.socket = this;
    }
};"""

# The same elements, written as a text in each frame.
WRITE = FRAME + """(async () => {
    const [times, shown] = arguments;
    for (let at = 0; at < times; ++at) {
        const [html, top] = shown[at % shown.length];
        document.body.innerHTML = html;
        scrollTo(0, top);
        await frame();
    }
    done();
})();"""


class Desk(PageTest):
    """The page on its terminal, and a second browser for plain pages."""

    change = YEAR + positions(5000)

    def runTest(self):
        pass

    # Processor time of the browser's main thread for each of so many frames, in milliseconds.
    def spent(self, browser, script, frames, *values):
        def total():
            metrics = browser.execute_cdp_cmd("Performance.getMetrics", {})["metrics"]
            return next(metric["value"] for metric in metrics if metric["name"] == "TaskDuration") * 1000
        browser.execute_cdp_cmd("Performance.enable", {"timeDomain": "threadTicks"})
        before = total()
        browser.execute_async_script(script, frames, *values)
        return (total() - before) / frames

    # Two states of the page, shown by the plain browser as well.
    def written(self, move):
        def shown():
            return self.run_js("return [document.body.innerHTML, scrollY]")
        states = [shown(), (move(), shown())[1]]
        self.plain.get("about:blank")
        self.plain.execute_script("document.head.append(Object.assign(document.createElement('style'), "
                                  "{textContent: arguments[0]}))", self.run_js(STYLE))
        return lambda: self.spent(self.plain, WRITE, 60, states)

    def scrolling(self):
        self.go("positions")
        self.see(".row")
        self.choose("Account", "80010001")
        self.see(".age", "5007")
        yardstick = self.written(lambda: self.browser.execute_async_script(SCROLL, 1))
        return lambda: self.spent(self.browser, SCROLL, 60), yardstick

    # 200 watched prices, of which a phone shows some twenty rows.
    def pushes(self):
        self.browser.execute_cdp_cmd("Page.addScriptToEvaluateOnNewDocument", {"source": SOCKET})
        self.open()
        self.go("positions")
        self.choose("Account", "80010001")
        watched = self.wait(lambda: next((each["data"] for each in self.frames("quote.watch") if len(each["data"]) == 200), None),
                            "fewer than 200 are watched")
        last = {row["hashCode"]: row["lastPrice"] for row in self.terminal.call("quote.list", {})}
        def push(step):
            rows = [{"hashCode": code, "lastPrice": last[code] + step, "bidPrice": last[code], "askPrice": last[code]}
                    for code in watched]
            return json.dumps({"topic": "quote.push", "message": "", "data": rows})
        texts = [push(0), push(1)]
        yardstick = self.written(lambda: self.spent(self.browser, PUSH, 2, texts))
        return lambda: self.spent(self.browser, PUSH, 60, texts), yardstick

    def curve(self):
        self.go("assets/equity")
        self.tap(".periods label", "Month")
        self.see(".curve")
        yardstick = self.written(lambda: self.browser.execute_async_script(SWITCH, 1))
        return lambda: self.spent(self.browser, SWITCH, 20), yardstick

    def paint(self, browser, link):
        browser.get("about:blank")
        browser.get(link)
        while not (painted := browser.execute_script("return performance.getEntriesByType('paint')[0]?.startTime")):
            time.sleep(0.01)
        return painted

    # A file of as many bytes as the page's own, which is painted when it has come.
    def plainFile(self):
        origin = f"http://127.0.0.1:{self.terminal.port}"
        def size(name):
            asked = urllib.request.Request(origin + name, headers={"Accept-Encoding": "gzip"})
            return len(urllib.request.urlopen(asked).read())
        main = "/" + re.search(r'modulepreload" href="(.*?)"', urllib.request.urlopen(origin).read().decode())[1]
        body = b"<!doctype html><!--" + b"-" * sum(map(size, ("/", "/app.css", "/app.js", main))) + b"><p>Plain"
        class Answer(http.server.BaseHTTPRequestHandler):
            def do_GET(self):
                self.send_response(200)
                self.send_header("Content-Type", "text/html")
                self.send_header("Content-Length", str(len(body)))
                self.end_headers()
                self.wfile.write(body)

            def log_message(self, *_):
                pass
        server = http.server.ThreadingHTTPServer(("127.0.0.1", 0), Answer)
        threading.Thread(target=server.serve_forever, daemon=True).start()
        return f"http://127.0.0.1:{server.server_address[1]}/"

    def firstPaint(self):
        for browser in (self.browser, self.plain):
            browser.execute_cdp_cmd("Network.enable", {})
            browser.execute_cdp_cmd("Network.emulateNetworkConditions", SLOW)
        link, plain = self.terminal.link, self.plainFile()
        def ours():  # as a device that has never seen the page
            self.browser.get("about:blank")
            self.browser.execute_cdp_cmd("Storage.clearDataForOrigin", {"origin": link.split("/#")[0], "storageTypes": "all"})
            self.browser.execute_cdp_cmd("Network.clearBrowserCache", {})
            return self.paint(self.browser, link)
        return ours, lambda: self.paint(self.plain, plain)

    def paintAway(self):
        for browser in (self.browser, self.plain):
            browser.execute_cdp_cmd("Network.disable", {})
        self.open()
        self.wait(lambda: self.run_js("""return navigator.serviceWorker.getRegistration().then(
            (it) => it?.active?.state === 'activated')"""), "no worker is active")
        self.go("positions")
        self.see("[data-list=positions] .row")
        plain = self.plainFile()
        self.terminal.end()
        return lambda: self.paint(self.browser, self.terminal.link.split("#")[0]), lambda: self.paint(self.plain, plain)


# Name, yardstick, what measures both sides, must, aim.
FIGURES = (
    ("scrolling 5,000 positions, a frame", "the same elements, written as HTML in each frame", Desk.scrolling, 1, 0.5),
    ("200 pushed prices over 5,000 positions, a push", "the same elements, written as HTML", Desk.pushes, 1, 0.5),
    ("a month's or a year's curve, from the tap", "the same elements, written as HTML", Desk.curve, 4, 2),
    ("first paint, 1.6 Mbit/s and 100 ms away", "a file of as many bytes", Desk.firstPaint, 1.5, 0.75),
    ("first paint while the terminal is away", "a file of as many bytes, from this machine", Desk.paintAway, 5, 2),
)


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument("program")
    parser.add_argument("--rounds", type=int, default=9)
    parser.add_argument("--filter", default="")
    parser.add_argument("--check", action="store_true")
    options = parser.parse_args()
    PageTest.program = options.program
    missed = []
    with openBrowser() as PageTest.browser, openBrowser() as Desk.plain, contextlib.ExitStack() as stack:
        stack.callback(Desk.doClassCleanups)
        Desk.setUpClass()
        desk = Desk()
        desk.setUp()
        version = Desk.browser.capabilities["browserVersion"]
        print(f"Measured on {time.strftime('%Y-%m-%d')} with Chromium {version}, {options.rounds} rounds.\n\n"
              "| Figure | Yardstick | Ours | Yardstick's | Ratio (quartiles) | Must | Aim |\n|---|---|---|---|---|---|---|")
        for name, yardstick, prepare, must, aim in FIGURES:
            if options.filter not in name:
                continue
            ours, plain = prepare(desk)
            rounds = [(ours(), plain()) for _ in range(options.rounds + 1)][1:]  # the first one warms up
            values = [our / other for our, other in rounds]
            ratios = statistics.quantiles(values, n=4, method="inclusive") if len(values) > 1 else values * 3
            times = [f"{statistics.median(side):.3g} ms" for side in zip(*rounds)]
            print(f"| page, {name} | {yardstick} | {times[0]} | {times[1]} | **{ratios[1]:.2f}** "
                  f"({ratios[0]:.2f}–{ratios[2]:.2f}) | ≤ {must:.2f} | ≤ {aim:.2f} |", flush=True)
            if ratios[1] > must:
                missed.append(name)
    print()
    if options.check and missed:
        sys.exit("missed: " + ", ".join(missed))


if __name__ == "__main__":
    main()
