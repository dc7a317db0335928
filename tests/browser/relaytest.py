#!/usr/bin/python3
"""The page at a relay: two terminals in one browser, what is seen of one that goes, and prices. Usage: relaytest.py
POCKET_TERMINAL with pocket-relay beside it."""
import os
import pathlib
import re
import signal
import socket
import subprocess
import tempfile

import listtest
from page import PageTest, main
from terminal import Terminal

NAMES = ("desk1", "desk2")


def start(*command):
    process = subprocess.Popen(command, stdout=subprocess.PIPE, text=True)
    return process, process.stdout.readline()


def free_port():
    with socket.create_server(("127.0.0.1", 0)) as free:
        return free.getsockname()[1]


class FarTerminal(Terminal):
    """Behind the relay. The test itself asks it directly."""

    def __init__(self, program, folder, name, servers):
        self.program, self.folder, self.port = program, f"{folder}/{name}", free_port()
        self.command = [program, "--data", self.folder, "--quotes", "still", "--relay", servers, "--name", name,
                        "--relay-credentials", f"{folder}/terminals/{name}.credentials", "--port", str(self.port)]
        self.start()

    def start(self):
        self.process, line = start(*self.command)
        self.link = re.search(r"http://\S+", line)[0] if "token" in line else self.link


class RelayTest(PageTest):
    @classmethod
    def setUpClass(cls):
        folder = tempfile.TemporaryDirectory()
        cls.addClassCleanup(folder.cleanup)
        dir, relay = folder.name, str(pathlib.Path(cls.program).with_name("pocket-relay"))
        address = "127.%d.%d.%d" % (1 + os.getpid() // 65536 % 254, os.getpid() // 256 % 256, 1 + os.getpid() % 254)
        port = free_port()
        subprocess.run([relay, "setup", dir, "--terminals", ",".join(NAMES), "--servers", f"{address}:4222",
                        "--page", f"http://127.0.0.1:{port}"], check=True, stdout=subprocess.DEVNULL)
        servers = f"nats://{address}:4222"
        server = subprocess.Popen(["/usr/sbin/nats-server", "-c", "nats.conf"], cwd=f"{dir}/server1",
                                  stderr=subprocess.DEVNULL)
        cls.addClassCleanup(lambda: (server.kill(), server.wait()))
        process, _ = start(relay, "--port", str(port), "--data", f"{dir}/relay", "--servers", servers, "--credentials",
                              f"{dir}/relays/relay1.credentials")
        cls.addClassCleanup(lambda: (process.kill(), process.wait(), process.stdout.close()))
        cls.terminals = [FarTerminal(cls.program, dir, name, servers) for name in NAMES]
        cls.terminal = cls.terminals[0]
        for each in cls.terminals:
            cls.addClassCleanup(each.end)

    # A terminal that the relay does not know yet is looked for again soon.
    def open(self):
        if self.taps == 0:
            self.browser.get(self.terminal.link.split("#")[0])
            self.run_js("localStorage.setItem('test-hasty', 'yes')")
        super().open()

    names = listtest.ListTest.names
    test_quotes = listtest.ListTest.test_quotes_are_starred_searched_followed_and_traded
    test_alert = listtest.ListTest.test_an_alert_is_set_and_shown_once_even_if_it_fires_while_the_page_is_closed

    def row(self, name):
        return self.see(".terminal", name).text

    def test_two_terminals_are_switched_between_and_one_that_goes_is_said(self):
        self.see(".link.online", "desk1")
        self.run_js("location.hash = arguments[0]", self.terminals[1].link.split("#")[1])
        self.see(".link.online", "desk2")
        self.ticket("TA701", "Buy to open", 4510, 1)
        self.tap("dialog .primary", "Review")
        self.assertEqual("desk2", self.confirmed()["Terminal"])
        self.browser.get("about:blank")
        self.browser.get(self.terminal.link.split("#")[0] + "#/settings")
        self.wait(lambda: "present" in self.row("desk1"), "desk1 is not seen")
        self.assertIn("in use", self.row("desk2"))
        self.terminals[0].end(signal.SIGTERM)
        self.wait(lambda: re.search(r"away since \d\d:\d\d:\d\d", self.row("desk1")), "desk1 is not away")
        self.tap(".terminal button", "Switch")
        self.see(".banner", "desk1: away since")
        self.terminals[0].start()
        self.see(".link.online", "desk1")
        self.tap(".tab.trade")
        self.see("dialog #instrument")  # nothing of the other terminal's ticket
        self.browser.back()
        self.gone("dialog")
        self.go("settings")
        self.assertEqual([], self.faults())
        self.tap("button", "Forget the terminal desk1")
        self.tap(".terminal button", "Switch")
        self.see(".link.online", "desk2")


if __name__ == "__main__":
    main()
