"""A headless Chromium, driven through its WebDriver: as much of it as the tests need."""

import json
import re
import subprocess
import tempfile
import urllib.request

FLAGS = ("--headless --no-sandbox --disable-gpu --disable-quic --no-first-run "
         "--disable-background-networking --disable-component-update --disable-sync "
         "--window-size=1200,800").split()


class Browser:
    """Use it in a `with` statement; it ends with its block."""

    def __enter__(self):
        self.profile = tempfile.TemporaryDirectory(ignore_cleanup_errors=True)
        self.driver = subprocess.Popen(["chromedriver", "--port=0"], stdout=subprocess.PIPE,
                                       stderr=subprocess.STDOUT, text=True)
        port = None
        while port is None:
            port = re.search(r"on port (\d+)\.", self.driver.stdout.readline())
        self.address = f"http://127.0.0.1:{port[1]}/session"
        options = {"args": [*FLAGS, f"--user-data-dir={self.profile.name}"]}
        answer = self.call("", capabilities={"alwaysMatch": {
            "goog:chromeOptions": options, "goog:loggingPrefs": {"browser": "ALL"}}})
        self.address += "/" + answer["sessionId"]
        return self

    def __exit__(self, *_):
        urllib.request.urlopen(urllib.request.Request(self.address, method="DELETE")).close()
        self.driver.terminate()
        self.driver.wait()
        self.driver.stdout.close()
        self.profile.cleanup()

    def call(self, command, **body):
        request = urllib.request.Request(self.address + command, json.dumps(body).encode())
        with urllib.request.urlopen(request, timeout=120) as answer:
            return json.load(answer)["value"]

    def open(self, path):
        self.call("/url", url=f"file://{path}")
        self.settle()

    def run(self, script):
        """What `script` returns."""
        return self.call("/execute/sync", script=script, args=[])

    def settle(self):
        """Waits until two frames have been drawn."""
        self.call("/execute/async", args=[], script="""
            const done = arguments[0];
            requestAnimationFrame(() => requestAnimationFrame(() => done(0)));""")

    def act(self, *sources):
        self.call("/actions", actions=list(sources))
        self.settle()

    def pointer(self, *steps, kind="mouse", name="mouse"):
        """Steps: (x, y) moves there, "down" and "up" press and release."""
        actions = [{"type": "pointerMove", "x": step[0], "y": step[1], "duration": 0}
                   if isinstance(step, tuple) else
                   {"type": {"down": "pointerDown", "up": "pointerUp"}[step], "button": 0}
                   for step in steps]
        return {"type": "pointer", "id": name, "parameters": {"pointerType": kind},
                "actions": actions}

    def press(self, *keys):
        self.act({"type": "key", "id": "keys", "actions": [
            {"type": kind, "value": key} for key in keys for kind in ("keyDown", "keyUp")]})

    def messages(self):
        return self.call("/se/log", type="browser")
