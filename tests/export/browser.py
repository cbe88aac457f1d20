"""Drives a headless Chromium through its debugging pipe, with nothing but Python's standard library."""
import base64
import fcntl
import json
import os
import subprocess
import time


class Browser:
    """A browser with one page. Use as a context manager; `folder` is an empty folder for its files."""

    def __init__(self, program, folder):
        (commands, self.commands), (self.answers, answers) = os.pipe(), os.pipe()

        def place_pipes():  # the browser reads from descriptor 3 and writes to 4
            ends = [fcntl.fcntl(end, fcntl.F_DUPFD, 10) for end in (commands, answers)]
            for descriptor, end in zip((3, 4), ends):
                os.dup2(end, descriptor)

        self.process = subprocess.Popen(
            [program, "--headless", "--no-sandbox", "--disable-gpu", "--disable-quic", "--no-first-run",
             "--disable-background-networking", "--disable-component-update", "--disable-sync",
             "--disable-dev-shm-usage", "--hide-scrollbars", "--remote-debugging-pipe",
             "--user-data-dir=" + os.path.join(folder, "profile"), "about:blank"],
            stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL, close_fds=False, preexec_fn=place_pipes)
        os.close(commands)
        os.close(answers)
        self.received = b""
        self.last_id = 0
        self.events = []
        self.session = {}
        page = [target for target in self.call("Target.getTargets")["targetInfos"] if target["type"] == "page"][0]
        self.session = {"sessionId": self.call("Target.attachToTarget", targetId=page["targetId"], flatten=True)["sessionId"]}
        for domain in ("Page", "Runtime", "Log", "Network"):
            self.call(domain + ".enable")

    def __enter__(self):
        return self

    def __exit__(self, *_):
        os.close(self.commands)  # which ends it
        try:
            self.process.wait(20)
        except subprocess.TimeoutExpired:
            self.process.kill()
            self.process.wait()

    def _receive(self):
        while b"\0" not in self.received:
            piece = os.read(self.answers, 1 << 16)
            if not piece:
                raise RuntimeError("the browser has ended")
            self.received += piece
        text, self.received = self.received.split(b"\0", 1)
        return json.loads(text)

    def call(self, method, **parameters):
        """The result of a command; events that arrive meanwhile are kept."""
        self.last_id += 1
        command = {"id": self.last_id, "method": method, "params": parameters, **self.session}
        os.write(self.commands, json.dumps(command).encode() + b"\0")
        while True:
            message = self._receive()
            if message.get("id") == self.last_id:
                if "error" in message:
                    raise RuntimeError("%s: %s" % (method, message["error"]))
                return message["result"]
            self.events.append(message)

    def evaluate(self, expression):
        result = self.call("Runtime.evaluate", expression=expression, returnByValue=True, awaitPromise=True)
        if "exceptionDetails" in result:
            raise RuntimeError("%s: %s" % (expression, result["exceptionDetails"]))
        return result["result"].get("value")

    def open(self, path, width, height):
        """Opens a file in a window of the given size and waits until its scripts have run."""
        self.call("Emulation.setDeviceMetricsOverride", width=width, height=height, deviceScaleFactor=1, mobile=False)
        self.call("Page.navigate", url="file://" + path)
        for _ in range(600):
            if self.evaluate("document.readyState === 'complete' && location.protocol === 'file:'"):
                return self.wait_for_frames(2)
            time.sleep(0.1)
        raise RuntimeError(path + " did not load within 60 s")

    def wait_for_frames(self, count):
        for _ in range(count):
            self.evaluate("new Promise(function (done) { requestAnimationFrame(function () { done(0); }); })")

    def prefer(self, **features):
        """Media features: colour_scheme="dark", reduced_motion="reduce", ..."""
        self.call("Emulation.setEmulatedMedia", features=[
            {"name": "prefers-" + name.replace("_", "-").replace("colour", "color"), "value": value}
            for name, value in features.items()])

    def click(self, selector):
        """A click of the mouse on the middle of an element."""
        x, y = self.evaluate("(function () { var e = document.querySelector(%s); e.scrollIntoView({block: 'center'});"
                             "var b = e.getBoundingClientRect(); return [b.x + b.width / 2, b.y + b.height / 2]; })()"
                             % json.dumps(selector))
        for kind in ("mousePressed", "mouseReleased"):
            self.call("Input.dispatchMouseEvent", type=kind, x=x, y=y, button="left", clickCount=1)
        self.wait_for_frames(2)

    def screenshot(self, path):
        with open(path, "wb") as file:
            file.write(base64.b64decode(self.call("Page.captureScreenshot", format="png")["data"]))

    def complaints(self):
        """Console messages, errors and requests for anything but the page itself, as texts."""
        self.evaluate("0")
        found = []
        for event in self.events:
            method, details = event.get("method"), event.get("params", {})
            if method in ("Runtime.consoleAPICalled", "Runtime.exceptionThrown", "Log.entryAdded"):
                found.append(json.dumps(details)[:600])
            if method == "Network.requestWillBeSent":
                url = details["request"]["url"]
                if details.get("type") != "Document" and not url.startswith(("data:", "blob:")):
                    found.append("request for " + url)
        return found
