"""Drives a Chromium without a window through its debugging pipe."""

import itertools
import json
import os
import subprocess


class Browser:
    """Trusts certificates with one public key. `key_hash` is the SHA-256 hash of this key in base64."""

    def __init__(self, folder, key_hash):
        to_browser, self.to_browser = os.pipe()
        self.from_browser, from_browser = os.pipe()
        command = ["chromium", "--headless=new", "--remote-debugging-pipe", f"--user-data-dir={folder}", "--disable-gpu",
                   f"--ignore-certificate-errors-spki-list={key_hash}", "--no-first-run", "--no-default-browser-check",
                   "--disable-background-networking", "--disable-component-update", "--disable-default-apps",
                   "--disable-sync", "--disable-extensions", "--window-size=390,844"]
        if os.geteuid() == 0:
            command.append("--no-sandbox")
        # The browser reads commands from descriptor 3 and writes answers to descriptor 4.
        self.process = subprocess.Popen(["bash", "-c", f'exec "$@" 3<&{to_browser} 4>&{from_browser}', "bash", *command],
                                        pass_fds=(to_browser, from_browser), stdin=subprocess.DEVNULL,
                                        stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
        os.close(to_browser)
        os.close(from_browser)
        self.identifiers = itertools.count(1)
        self.received = b""

    def close(self):
        self.call("Browser.close")
        self.process.wait()

    def page(self):
        """Opens a page with an empty cache and without connections."""
        context = self.call("Target.createBrowserContext")["browserContextId"]
        target = self.call("Target.createTarget", url="about:blank", browserContextId=context)["targetId"]
        session = self.call("Target.attachToTarget", targetId=target, flatten=True)["sessionId"]
        self.call("Page.enable", session)
        self.call("Page.addScriptToEvaluateOnNewDocument", session,
                  source="const bannerTime = new Promise(resolve => { window.reportBanner = resolve; });")
        return Page(self, context, session)

    def call(self, method, session=None, **parameters):
        """Sends a command and returns its result. Skips events."""
        identifier = next(self.identifiers)
        command = {"id": identifier, "method": method, "params": parameters}
        if session:
            command["sessionId"] = session
        os.write(self.to_browser, json.dumps(command).encode() + b"\0")
        while True:
            while b"\0" not in self.received:
                piece = os.read(self.from_browser, 1 << 16)
                if not piece:
                    raise SystemExit(f"The browser ended at {method}")
                self.received += piece
            line, self.received = self.received.split(b"\0", 1)
            answer = json.loads(line)
            if answer.get("id") == identifier:
                if "error" in answer:
                    raise SystemExit(f"{method}: {answer['error']['message']}")
                return answer["result"]


class Page:
    def __init__(self, browser, context, session):
        self.browser, self.context, self.session = browser, context, session

    def open(self, url):
        """Returns whether the page could be loaded."""
        return "errorText" not in self.browser.call("Page.navigate", self.session, url=url)

    def banner(self, url):
        """Opens the URL, waits for its banner, and returns what page.html measured. None if there is no page."""
        if not self.open(url):
            return None
        result = self.browser.call("Runtime.evaluate", self.session, expression="bannerTime", awaitPromise=True,
                                   returnByValue=True)["result"]
        return result.get("value") if result["type"] == "number" else None

    def close(self):
        self.browser.call("Target.disposeBrowserContext", browserContextId=self.context)
