"""A real Chromium in a real window of a private desktop, driven from outside.

The pages are driven through the browser's debugging port, so that nothing a test does passes
through the accessibility tree that the monitor reads.
"""

import contextlib
import json
import os
import urllib.error
import urllib.request

import websocket

from meeting_pages import HOSTS
from waiting import waitUntil

_BROWSER = "chromium"
# Seconds that the browser may take to answer one request on its debugging port.
_ANSWER_BOUND = 20


class Browser:
    """A running browser with one window; `tab` is the tab it opened with.

    Its profile is the directory of its name: a browser that starts again under that name finds what
    the one before it left behind. `app` makes the window one of a web application: without tabs and
    without an address bar; `flags` are further arguments. Pages get the microphone without a
    question and play without a click.
    """

    def __init__(self, desktop, pages, url, name="browser", app=False, flags=()):
        self._desktop = desktop
        self._name = name
        self._profile = os.path.join(desktop.directory, name)
        with contextlib.suppress(FileNotFoundError):
            os.remove(self._portPath())
        rules = [f"MAP {host}:443 127.0.0.1:{pages.port}" for host in HOSTS]
        self.process = desktop.start(name, [
            _BROWSER, "--no-first-run", "--disable-gpu", "--disable-quic", "--test-type",
            "--disable-background-networking", "--disable-component-update", "--disable-sync",
            "--disable-breakpad", "--password-store=basic", "--hide-crash-restore-bubble",
            "--ignore-certificate-errors", "--window-size=1400,900",
            "--use-fake-ui-for-media-stream", "--autoplay-policy=no-user-gesture-required",
            f"--host-resolver-rules={','.join(rules)},MAP * ~NOTFOUND,EXCLUDE 127.0.0.1",
            f"--user-data-dir={self._profile}", "--remote-debugging-port=0",
            *(["--no-sandbox"] if os.geteuid() == 0 else []), *flags,
            f"--app={url}" if app else url])
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

    def openWindow(self, url):
        """Opens a window with one tab, apart from the others, and gives the tab once it stands."""
        with contextlib.closing(_connect(self._target("version"))) as connection:
            identifier = _ask(connection, 1, "Target.createTarget", url=url, newWindow=True,
                              left=300, top=150, width=1100, height=700)["targetId"]
        tab = Tab(self, waitUntil("the window has its page", lambda: self._listed(identifier)))
        tab.waitUntilLoaded()
        return tab

    def closeTab(self, tab):
        """Closes a tab; the window goes with its last one. Does nothing if the tab has gone."""
        tab.disconnect()
        with contextlib.suppress(urllib.error.HTTPError), urllib.request.urlopen(
                self._address(f"/json/close/{tab.identifier}"), timeout=_ANSWER_BOUND):
            pass

    def openWindows(self, urls):
        """Opens a further window for each address, without waiting for the pages."""
        with contextlib.closing(_connect(self._target("version"))) as connection:
            for number, url in enumerate(urls):
                _ask(connection, number, "Target.createTarget", url=url, newWindow=True)

    def _announcedPort(self):
        self._desktop.processes.mustRun(self._name)
        with contextlib.suppress(FileNotFoundError):
            with open(self._portPath(), encoding="ascii") as file:
                return file.readline().strip()
        return None

    def _firstTab(self, url):
        self._desktop.processes.mustRun(self._name)
        for target in self._target("list"):
            if target["type"] == "page" and target["url"].startswith(url):
                tab = Tab(self, target)
                tab.waitUntilLoaded()
                return tab
        return None

    def _listed(self, identifier):
        return next((target for target in self._target("list") if target["id"] == identifier), None)

    def _target(self, question):
        with urllib.request.urlopen(self._address(f"/json/{question}"),
                                    timeout=_ANSWER_BOUND) as answer:
            return json.load(answer)

    def _portPath(self):
        return os.path.join(self._profile, "DevToolsActivePort")

    def _address(self, path):
        return f"http://127.0.0.1:{self._port}{path}"


class Tab:
    """One tab of a browser."""

    def __init__(self, browser, target):
        self.browser = browser
        self.identifier = target["id"]
        self._messages = 0
        self._socket = _connect(target)

    def evaluate(self, expression):
        """Gives the value of a JavaScript expression in the page; a RuntimeError if it throws.

        The value of a promise is what it promises, once that is there.
        """
        answer = self._ask("Runtime.evaluate", expression=expression, returnByValue=True,
                           awaitPromise=True)
        if "exceptionDetails" in answer:
            raise RuntimeError(f"{expression}: {answer['exceptionDetails']}")
        return answer["result"].get("value")

    def navigate(self, url):
        """Loads another document and waits until its screen stands."""
        self.evaluate("window.earlier = true")
        self._ask("Page.navigate", url=url)
        self.waitUntilLoaded()

    def reload(self):
        """Loads the same document anew and waits until its screen stands."""
        self.evaluate("window.earlier = true")
        self._ask("Page.reload")
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
        return _ask(self._socket, self._messages, method, **parameters)


def _connect(target):
    # Without an origin: the port refuses any that it was not told of.
    return websocket.create_connection(target["webSocketDebuggerUrl"], timeout=_ANSWER_BOUND,
                                       suppress_origin=True)


def _ask(connection, number, method, **parameters):
    """Gives the result of a request on the debugging port; a RuntimeError if it is refused."""
    connection.send(json.dumps({"id": number, "method": method, "params": parameters}))
    while True:
        answer = json.loads(connection.recv())
        if answer.get("id") == number:
            if "error" in answer:
                raise RuntimeError(f"{method}: {answer['error']}")
            return answer["result"]
