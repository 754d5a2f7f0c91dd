"""A headless Chromium for tests, spoken to over its debugging pipe (Chrome DevTools Protocol)."""

import base64
import json
import os
import pathlib
import subprocess
import tempfile
import time

DEADLINE = 60
CHROMIUM = "/usr/bin/chromium"
# Without a graphics card WebGL is drawn by the processor; nothing is looked up on a network.
FLAGS = ["--headless", "--no-sandbox", "--disable-quic", "--no-first-run", "--hide-scrollbars",
         "--disable-background-networking", "--disable-component-update", "--disable-sync",
         "--disable-extensions", "--mute-audio", "--use-angle=swiftshader",
         "--enable-unsafe-swiftshader", "--remote-debugging-pipe", "about:blank"]


class Browser:
    """One tab. `complaints` are the exceptions and errors of its pages, `requests` what they ask for."""

    def __enter__(self):
        self.profile = tempfile.TemporaryDirectory(prefix="browser_", ignore_cleanup_errors=True)
        commands, self.commands = os.pipe()
        self.answers, answers = os.pipe()
        # The browser reads from descriptor 3 and writes to 4.
        start = ["bash", "-c", f'exec "$@" 3<&{commands} 4>&{answers}', "bash", CHROMIUM,
                 f"--user-data-dir={self.profile.name}"] + FLAGS
        self.process = subprocess.Popen(start, pass_fds=(commands, answers), close_fds=True,
                                        stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
        os.close(commands)
        os.close(answers)
        self.unread, self.number, self.session = b"", 0, None
        self.complaints, self.requests = [], []
        target = self.call("Target.createTarget", url="about:blank")["targetId"]
        self.session = self.call("Target.attachToTarget", targetId=target,
                                 flatten=True)["sessionId"]
        for domain in ("Page", "Runtime", "Log", "Network"):
            self.call(domain + ".enable")
        return self

    def __exit__(self, *_):
        self.process.terminate()
        try:
            self.process.wait(DEADLINE)
        except subprocess.TimeoutExpired:
            self.process.kill()
            self.process.wait()
        os.close(self.commands)
        os.close(self.answers)
        self.profile.cleanup()

    def call(self, method, **parameters):
        """Calls a method of the protocol; returns its result."""
        self.number += 1
        message = {"id": self.number, "method": method, "params": parameters}
        if self.session:
            message["sessionId"] = self.session
        os.write(self.commands, json.dumps(message).encode() + b"\0")
        while True:
            answer = self.receive()
            if answer.get("id") == self.number:
                if "error" in answer:
                    raise RuntimeError(f"{method}: {answer['error']}")
                return answer["result"]

    def receive(self):
        while b"\0" not in self.unread:
            part = os.read(self.answers, 1 << 20)
            if not part:
                raise RuntimeError("the browser has ended")
            self.unread += part
        message, self.unread = self.unread.split(b"\0", 1)
        message = json.loads(message)
        self.note(message)
        return message

    def note(self, message):
        parameters = message.get("params", {})
        if message.get("method") == "Runtime.exceptionThrown":
            details = parameters["exceptionDetails"]
            self.complaints.append(details.get("exception", details).get("description", str(details)))
        elif message.get("method") == "Log.entryAdded" and parameters["entry"]["level"] == "error":
            self.complaints.append(parameters["entry"]["text"])
        elif message.get("method") == "Network.requestWillBeSent":
            self.requests.append(parameters["request"]["url"])

    def open(self, path, ready):
        """Opens a file and waits until the expression is true in it."""
        self.call("Page.navigate", url=pathlib.Path(path).resolve().as_uri())
        self.wait_for(f"document.readyState === 'complete' && ({ready})")

    def wait_for(self, expression):
        end = time.monotonic() + DEADLINE
        while not self.run(expression):
            if time.monotonic() > end:
                raise RuntimeError(f"waited in vain for {expression}; {self.complaints}")
            time.sleep(0.02)

    def run(self, expression):
        """The value of a script's expression, awaited."""
        result = self.call("Runtime.evaluate", expression=expression, returnByValue=True,
                           awaitPromise=True)
        if "exceptionDetails" in result:
            raise RuntimeError(f"{expression}: {result['exceptionDetails']}")
        return result["result"].get("value")

    def set_window(self, width, height, phone=False):
        self.call("Emulation.setDeviceMetricsOverride", width=width, height=height,
                  deviceScaleFactor=2 if phone else 1, mobile=phone)
        self.call("Emulation.setTouchEmulationEnabled", enabled=phone)
        self.run("new Promise(done => requestAnimationFrame(() => requestAnimationFrame(done)))")

    def drag(self, start, end):
        """By the mouse, in a few steps."""
        def send(kind, place, buttons):
            self.call("Input.dispatchMouseEvent", type=kind, x=place[0], y=place[1], button="left",
                      buttons=buttons, clickCount=1)
        send("mousePressed", start, 1)
        for step in (0.3, 0.6, 1):
            place = [a + (b - a) * step for a, b in zip(start, end)]
            send("mouseMoved", place, 1)
        send("mouseReleased", end, 0)

    def click(self, place):
        self.drag(place, place)

    def touch(self, start, end):
        """By a finger, in a few steps."""
        def send(kind, place):
            points = [{"x": place[0], "y": place[1]}] if place else []
            self.call("Input.dispatchTouchEvent", type=kind, touchPoints=points)
        send("touchStart", start)
        for step in (0.3, 0.6, 1):
            send("touchMove", [a + (b - a) * step for a, b in zip(start, end)])
        send("touchEnd", None)

    def screenshot(self, path):
        picture = self.call("Page.captureScreenshot", format="png")["data"]
        pathlib.Path(path).write_bytes(base64.b64decode(picture))
