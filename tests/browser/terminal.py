"""The built pocket-terminal as a process, and a phone-sized browser."""
import json
import re
import signal
import subprocess

from selenium import webdriver
from selenium.webdriver.chrome.service import Service

FLAGS = ("--no-sandbox --headless=new --disable-gpu --disable-background-networking --disable-component-update "
         "--disable-sync --disable-quic --no-first-run --hide-scrollbars --lang=en").split()

# Lets a test lose what the terminal says, and narrow the rights that it grants.
HOOK = """
const Socket = WebSocket;
window.WebSocket = class extends Socket {
  set onmessage(listener) {
    super.onmessage = listener && ((event) => {
      const frame = JSON.parse(event.data);
      const rights = localStorage.getItem("test-rights");
      if (frame.topic === "login" && rights) frame.data = {...frame.data, rights: JSON.parse(rights)};
      if (!window.isDeaf) listener({data: JSON.stringify(frame)});
    });
  }
};"""


class Terminal:
    def __init__(self, program, folder):
        self.program, self.folder, self.port, self.link = program, folder, 0, ""
        self.start()

    def start(self):
        command = [self.program, "--data", self.folder, "--port", str(self.port), "--quotes", "still"]
        self.process = subprocess.Popen(command, stdout=subprocess.PIPE, text=True)
        for line in self.process.stdout:
            if found := re.search(r"http://127\.0\.0\.1:(\d+)/\S*", line):
                self.port, self.link = int(found[1]), found[0]
                return
        raise RuntimeError("the terminal did not start")

    def end(self, how=signal.SIGKILL):
        self.process.send_signal(how)
        if how != signal.SIGSTOP:
            self.process.wait()
            self.process.stdout.close()

    def call(self, topic, data):
        command = [self.program, "call", topic, json.dumps(data), "--json"]
        return json.loads(subprocess.run(
            command + ["--data", self.folder, "--port", str(self.port)], capture_output=True, check=True).stdout)


def openBrowser(profile):
    options = webdriver.ChromeOptions()
    for flag in FLAGS + [f"--user-data-dir={profile}"]:
        options.add_argument(flag)
    options.set_capability("goog:loggingPrefs", {"browser": "ALL"})
    browser = webdriver.Chrome(service=Service("/usr/bin/chromedriver"), options=options)
    browser.execute_cdp_cmd("Emulation.setDeviceMetricsOverride",
                            {"width": 360, "height": 740, "deviceScaleFactor": 1, "mobile": True})
    browser.execute_cdp_cmd("Page.addScriptToEvaluateOnNewDocument", {"source": HOOK})
    return browser
