"""A real Chromium in a real window of a private desktop, driven from outside.

The pages are driven through the browser's debugging port, so that nothing a test does passes
through the accessibility tree that the monitor reads.
"""

import contextlib
import json
import os
import urllib.request

import websocket

from meeting_pages import MEET_HOST
from waiting import waitUntil

_BROWSER = "chromium"
# Seconds that the browser may take to answer one request on its debugging port.
_ANSWER_BOUND = 20


class Browser:
    """A running browser with one window; `tab` is the tab it opened with."""

    def __init__(self, desktop, pages, url, name="browser", flags=()):
        self._desktop = desktop
        self._name = name
        self._profile = os.path.join(desktop.directory, name)
        self.process = desktop.start(name, [
            _BROWSER, "--no-first-run", "--disable-gpu", "--disable-quic", "--test-type",
            "--disable-background-networking", "--disable-component-update", "--disable-sync",
            "--disable-breakpad", "--password-store=basic",
            "--ignore-certificate-errors", "--window-size=1400,900",
            f"--host-resolver-rules=MAP {MEET_HOST}:443 127.0.0.1:{pages.port},"
            "MAP * ~NOTFOUND,EXCLUDE 127.0.0.1",
            f"--user-data-dir={self._profile}", "--remote-debugging-port=0",
            *(["--no-sandbox"] if os.geteuid() == 0 else []), *flags, url])
        self._port = int(waitUntil("the browser opens its debugging port", self._announcedPort))
        self.tab = waitUntil("the browser opens its first page", lambda: self._firstTab(url))

    @property
    def pid(self):
        """The process id of the browser itself, the parent of its helpers."""
        return self.process.pid

    def close(self):
        """Ends the browser; does nothing if it has ended."""
        self._desktop.processes.stop(self._name)

    def openTab(self, url):
        """Opens a further tab in front of the others."""
        request = urllib.request.Request(self._address(f"/json/new?{url}"), method="PUT")
        with urllib.request.urlopen(request, timeout=_ANSWER_BOUND) as answer:
            return Tab(self, json.load(answer))

    def closeTab(self, tab):
        """Closes a tab; the window goes with its last one."""
        tab.disconnect()
        with urllib.request.urlopen(self._address(f"/json/close/{tab.identifier}"),
                                    timeout=_ANSWER_BOUND):
            pass

    def openWindows(self, urls):
        """Opens a further window for each address, without waiting for the pages."""
        with urllib.request.urlopen(self._address("/json/version"),
                                    timeout=_ANSWER_BOUND) as answer:
            address = json.load(answer)["webSocketDebuggerUrl"]
        connection = websocket.create_connection(address, timeout=_ANSWER_BOUND,
                                                 suppress_origin=True)
        with contextlib.closing(connection):
            for number, url in enumerate(urls):
                connection.send(json.dumps({"id": number, "method": "Target.createTarget",
                                            "params": {"url": url, "newWindow": True}}))
                while json.loads(connection.recv()).get("id") != number:
                    pass

    def _announcedPort(self):
        self._desktop.processes.mustRun(self._name)
        with contextlib.suppress(FileNotFoundError):
            path = os.path.join(self._profile, "DevToolsActivePort")
            with open(path, encoding="ascii") as file:
                return file.readline().strip()
        return None

    def _firstTab(self, url):
        self._desktop.processes.mustRun(self._name)
        with urllib.request.urlopen(self._address("/json/list"), timeout=_ANSWER_BOUND) as answer:
            for target in json.load(answer):
                if target["type"] == "page" and target["url"].startswith(url):
                    tab = Tab(self, target)
                    tab.waitUntilLoaded()
                    return tab
        return None

    def _address(self, path):
        return f"http://127.0.0.1:{self._port}{path}"


class Tab:
    """One tab of a browser."""

    def __init__(self, browser, target):
        self.browser = browser
        self.identifier = target["id"]
        self._messages = 0
        # Without an origin: the port refuses any that it was not told of.
        self._socket = websocket.create_connection(
            target["webSocketDebuggerUrl"], timeout=_ANSWER_BOUND, suppress_origin=True)

    def evaluate(self, expression):
        """Gives the value of a JavaScript expression in the page; a RuntimeError if it throws."""
        answer = self._ask("Runtime.evaluate", expression=expression, returnByValue=True)
        if "exceptionDetails" in answer:
            raise RuntimeError(f"{expression}: {answer['exceptionDetails']}")
        return answer["result"].get("value")

    def navigate(self, url):
        """Loads another document and waits until its screen stands."""
        self.evaluate("window.earlier = true")
        self._ask("Page.navigate", url=url)
        self.waitUntilLoaded()

    def waitUntilLoaded(self):
        """Waits until the page's own functions can be called, in the document of this load."""
        waitUntil("the page is loaded", lambda: self.evaluate(
            "!window.earlier && document.readyState === 'complete' && typeof show === 'function'"))

    def disconnect(self):
        """Lets go of the tab without closing it."""
        self._socket.close()

    def _ask(self, method, **parameters):
        self._messages += 1
        self._socket.send(json.dumps(
            {"id": self._messages, "method": method, "params": parameters}))
        while True:
            answer = json.loads(self._socket.recv())
            if answer.get("id") == self._messages:
                if "error" in answer:
                    raise RuntimeError(f"{method}: {answer['error']}")
                return answer["result"]
