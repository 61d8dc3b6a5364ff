# SPDX-License-Identifier: BSD-2-Clause
"""browser.py: Chromium without a window, led through its remote-debugging pipe: no port, no network, no package but its own.

Messages are JSON that ends with a zero byte; the browser reads them from descriptor 3 and writes to descriptor 4.
"""
import base64
import json
import os
import select
import shutil
import subprocess
import tempfile
import time

NAMES = ("chromium", "chromium-browser", "google-chrome")
PATIENCE = 240  # seconds for an answer, on a machine that has other work


def find():
    """The browser's path, or None."""
    return next(filter(None, map(shutil.which, NAMES)), None)


class Browser:
    """One page. Used with `with`, which ends the browser too."""

    def __init__(self, path):
        self.profile = tempfile.TemporaryDirectory(ignore_cleanup_errors=True)
        to_it, self.out = os.pipe()
        self.into, from_it = os.pipe()
        # 3 and 4 are what the browser expects; a shell puts them there, whatever numbers they have here.
        words = [path, "--headless", "--no-sandbox", "--disable-gpu", "--disable-dev-shm-usage", "--hide-scrollbars", "--no-first-run",
                 "--disable-background-networking", "--disable-component-update", "--disable-extensions", "--remote-debugging-pipe",
                 f"--user-data-dir={self.profile.name}", "about:blank"]
        self.process = subprocess.Popen(
            ["bash", "-c", f'exec "$@" 3<&{to_it} 4>&{from_it}', "browser"] + words, pass_fds=(to_it, from_it),
            stdin=subprocess.DEVNULL, stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL,
            env={**os.environ, "HOME": self.profile.name})
        os.close(to_it)
        os.close(from_it)
        self.number, self.rest, self.events, self.session = 0, b"", [], None
        targets = self.call("Target.getTargets")["targetInfos"]
        page = next(target for target in targets if target["type"] == "page")
        self.session = self.call("Target.attachToTarget", targetId=page["targetId"], flatten=True)["sessionId"]
        for domain in ("Page", "Runtime", "Network", "Log"):
            self.call(domain + ".enable")

    def __enter__(self):
        return self

    def __exit__(self, *_):
        os.close(self.out)  # it ends when nobody talks to it any more
        try:
            self.process.wait(30)
        except subprocess.TimeoutExpired:
            self.process.kill()
            self.process.wait()
        os.close(self.into)
        self.profile.cleanup()

    def receive(self, until):
        """The next message."""
        while b"\0" not in self.rest:
            if not select.select([self.into], [], [], max(0, until - time.monotonic()))[0]:
                raise TimeoutError("the browser does not answer")
            more = os.read(self.into, 1 << 20)
            if not more:
                raise EOFError("the browser has ended")
            self.rest += more
        message, _, self.rest = self.rest.partition(b"\0")
        return json.loads(message)

    def call(self, method, **parameters):
        """Sends a command and waits for its answer; what happens meanwhile is kept in `events`."""
        self.number += 1
        message = {"id": self.number, "method": method, "params": parameters}
        if self.session:
            message["sessionId"] = self.session
        data = json.dumps(message).encode() + b"\0"
        while data:
            data = data[os.write(self.out, data):]
        until = time.monotonic() + PATIENCE
        while True:
            answer = self.receive(until)
            if answer.get("id") == self.number:
                if "error" in answer:
                    raise RuntimeError(f"{method}: {answer['error']}")
                return answer["result"]
            self.events.append(answer)

    def wait_for(self, event):
        """Until an event of this name has come."""
        until = time.monotonic() + PATIENCE
        while not any(e.get("method") == event for e in self.events):
            self.events.append(self.receive(until))

    def open(self, url):
        self.events.clear()
        self.call("Page.navigate", url=url)
        self.wait_for("Page.loadEventFired")

    def evaluate(self, script):
        """The value of a script, or of what it promises."""
        answer = self.call("Runtime.evaluate", expression=script, awaitPromise=True, returnByValue=True)
        if "exceptionDetails" in answer:
            raise RuntimeError(f"{script}: {answer['exceptionDetails']}")
        return answer["result"].get("value")

    def window(self, width, height, phone=False, dark=False):
        self.call("Emulation.setDeviceMetricsOverride", width=width, height=height, deviceScaleFactor=2 if phone else 1, mobile=phone)
        self.call("Emulation.setTouchEmulationEnabled", enabled=phone)
        self.call("Emulation.setEmulatedMedia",
                  features=[{"name": "prefers-color-scheme", "value": "dark" if dark else "light"}])

    def press(self, key, code):
        for kind in ("keyDown", "keyUp"):
            self.call("Input.dispatchKeyEvent", type=kind, key=key, code=key, windowsVirtualKeyCode=code)

    def drag(self, begin, end):
        """The mouse, from one place of the window to another."""
        for kind, (x, y) in (("mousePressed", begin), ("mouseMoved", end), ("mouseReleased", end)):
            self.call("Input.dispatchMouseEvent", type=kind, x=x, y=y, button="left", buttons=1, clickCount=1)

    def screenshot(self, path, box=None):
        """A PNG of the window, or of a box of the page: x, y, width, height."""
        options = {}
        if box:
            options = {"clip": dict(zip(("x", "y", "width", "height"), box), scale=1), "captureBeyondViewport": True}
        path.write_bytes(base64.b64decode(self.call("Page.captureScreenshot", format="png", **options)["data"]))
