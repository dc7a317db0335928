#!/usr/bin/python3
"""Pictures of all views in both languages. Usage: shoot.py POCKET_TERMINAL FOLDER [NAME...]; without names, all of them."""
import pathlib
import sys

from page import VIEWS, PageTest
from terminal import openBrowser, resize


class Camera(PageTest):
    def runTest(self):
        pass

    def shoot(self, name):
        if not self.names or name in self.names:
            self.run_js("document.activeElement.blur()")
            self.browser.save_screenshot(str(self.folder / f"page-{name}.png"))

    def view(self, view):
        self.go(view)
        self.see(".settings" if view == "settings" else ".list:not(.stale)")
        self.gone(".stale-mark")

    def all(self, language):
        self.run_js("localStorage.setItem('language', arguments[0]); localStorage.removeItem('drafts')", language)
        self.open()
        for view in VIEWS:
            self.view(view)
            if view == "assets/equity":
                self.see(".periods label:nth-child(4)").click()
                self.wait(lambda: len(self.found(".plot .paid")) > 1, "no year")
            self.shoot(f"{view.replace('/', '-')}-{language}")
        self.view("positions")
        self.found(".row-main")[2].click()
        self.see("dialog .actions")
        self.shoot(f"position-{language}")
        self.browser.back()
        self.gone("dialog")
        self.found(".tab.trade")[0].click()
        self.see(".found [role=option]", "rb2701").click()
        self.see("dialog .facts")
        self.wait(lambda: "–\n" not in self.see("dialog .facts").text, "no rates")
        self.shoot(f"ticket-{language}")
        self.see("dialog .primary").click()
        self.see("dialog .confirm")
        self.wait(lambda: self.see("dialog .actions .primary").is_enabled(), "not settled")
        self.shoot(f"confirm-{language}")
        self.browser.back()
        self.browser.back()
        self.gone("dialog")
        resize(self.browser, 1280, 800, False)
        for view in ("positions", "orders"):
            self.view(view)
            self.wait(lambda: self.found(".headings"), "no table")
            self.shoot(f"desk-{language}" if view == "positions" else f"desk-{view}-{language}")
        resize(self.browser, 360, 740)


def main():
    program, folder, *names = sys.argv[1:]
    PageTest.program = program
    camera = Camera()
    camera.folder, camera.names = pathlib.Path(folder), names
    camera.folder.mkdir(parents=True, exist_ok=True)
    with openBrowser() as PageTest.browser:
        Camera.setUpClass()
        try:
            camera.setUp()
            for language in ("en", "zh"):
                camera.all(language)
        finally:
            Camera.doClassCleanups()


if __name__ == "__main__":
    main()
