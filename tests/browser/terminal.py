"""The built pocket-terminal as a process, and a phone-sized browser."""
import contextlib
import functools
import json
import pathlib
import re
import signal
import sqlite3
import subprocess

from selenium import webdriver
from selenium.webdriver.chrome.service import Service

# A browser without windows needs half as long. Closing the script in /usr/bin that starts it would leave it running.
BROWSER = "/usr/lib/chromium/chromium-headless-shell"
FLAGS = ("--no-sandbox --disable-gpu --disable-background-networking --disable-component-update "
         "--disable-sync --disable-quic --no-first-run --hide-scrollbars --lang=en --force-prefers-reduced-motion").split()

HOOK = (pathlib.Path(__file__).parent / "inside.js").read_text()


def positions(count):
    """SQL that adds so many positions, each in another instrument."""
    return "".join(
        f"INSERT INTO instrument SELECT {9_000_000 + n}, code_class, exchange, 'x{n}', '合约{n}', code_type, multiplier,"
        "price_tick, lot, max_volume, pre_close, pre_settlement, lower_limit, upper_limit FROM instrument"
        f" WHERE hash_code = 1000001; INSERT INTO holding VALUES (1, {9_000_000 + n}, 1, {n % 7 + 1}, 0, 0, 3300, 0, 0);"
        for n in range(count))


class Terminal:
    def __init__(self, program, folder, change="", quotes="still"):
        self.program, self.folder, self.port, self.link, self.quotes = program, folder, 0, "", quotes
        self.start()
        if change:
            self.change(change)

    def start(self):
        command = [self.program, "--data", self.folder, "--port", str(self.port), "--quotes", self.quotes]
        self.process = subprocess.Popen(command, stdout=subprocess.PIPE, text=True)
        for line in self.process.stdout:
            if found := re.search(r"http://127\.0\.0\.1:(\d+)/\S*", line):
                self.port, link = int(found[1]), found[0]
                self.link = link if "token" in link else self.link
                return
        raise RuntimeError("the terminal did not start")

    def end(self, how=signal.SIGKILL):
        self.process.send_signal(how)
        if how != signal.SIGSTOP:
            self.process.wait()
            self.process.stdout.close()

    def change(self, sql):
        """Changes the stored book, which the terminal reads at its start."""
        self.end(signal.SIGTERM)
        with contextlib.closing(sqlite3.connect(f"{self.folder}/terminal.db")) as database:
            database.executescript(f"BEGIN; {sql}; COMMIT;")
        self.start()

    def call(self, topic, data):
        command = [self.program, "call", topic, json.dumps(data), "--json"]
        return json.loads(subprocess.run(
            command + ["--data", self.folder, "--port", str(self.port)], capture_output=True, check=True).stdout)

    @functools.cached_property
    def accounts(self):
        return {row["index"]: row["userCode"] for row in self.call("account.list", {})}

    @functools.cached_property
    def codes(self):
        return {row["hashCode"]: row["codeExch"] for row in self.call("quote.list", {})}


def openBrowser():
    options = webdriver.ChromeOptions()
    options.binary_location = BROWSER
    for flag in FLAGS:
        options.add_argument(flag)
    options.set_capability("goog:loggingPrefs", {"browser": "ALL"})
    browser = webdriver.Chrome(service=Service("/usr/bin/chromedriver"), options=options)
    browser.set_script_timeout(120)
    resize(browser, 360, 740)
    browser.execute_cdp_cmd("Page.addScriptToEvaluateOnNewDocument", {"source": HOOK})
    return browser


def resize(browser, width, height, isPhone=True):
    browser.execute_cdp_cmd("Emulation.setDeviceMetricsOverride",
                            {"width": width, "height": height, "deviceScaleFactor": 1, "mobile": isPhone})
