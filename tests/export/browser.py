"""Drives a headless Chromium over its remote debugging port, with nothing but Python's standard library."""
import base64
import json
import os
import socket
import struct
import subprocess
import time
import urllib.request


class Browser:
    """A browser with one page. Use as a context manager; `folder` is an empty folder for its files."""

    def __init__(self, program, folder):
        self.profile = os.path.join(folder, "profile")
        self.process = subprocess.Popen(
            [program, "--headless", "--no-sandbox", "--disable-gpu", "--disable-quic", "--no-first-run",
             "--disable-background-networking", "--disable-component-update", "--disable-sync",
             "--disable-dev-shm-usage", "--hide-scrollbars", "--remote-debugging-port=0",
             "--user-data-dir=" + self.profile, "about:blank"],
            stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
        try:
            port = self._wait_for_port()
            self.socket = self._connect(port)
        except BaseException:
            self.process.kill()
            self.process.wait()
            raise
        self.received = b""
        self.last_id = 0
        self.events = []
        for domain in ("Page", "Runtime", "Log", "Network"):
            self.call(domain + ".enable")

    def __enter__(self):
        return self

    def __exit__(self, *_):
        try:
            self.call("Browser.close")
            self.process.wait(20)
        except Exception:
            self.process.kill()
            self.process.wait()

    def _wait_for_port(self):
        for _ in range(300):
            if self.process.poll() is not None:
                raise RuntimeError("the browser ended with status %d" % self.process.returncode)
            try:
                with open(os.path.join(self.profile, "DevToolsActivePort")) as file:
                    return int(file.readline())
            except (OSError, ValueError):
                time.sleep(0.1)
        raise RuntimeError("the browser opened no debugging port within 30 s")

    @staticmethod
    def _connect(port):
        direct = urllib.request.build_opener(urllib.request.ProxyHandler({}))
        pages = json.load(direct.open("http://127.0.0.1:%d/json/list" % port, timeout=20))
        path = [page for page in pages if page["type"] == "page"][0]["webSocketDebuggerUrl"].split("/", 3)[3]
        connection = socket.create_connection(("127.0.0.1", port), timeout=60)
        key = base64.b64encode(os.urandom(16)).decode()
        connection.sendall(("GET /%s HTTP/1.1\r\nHost: 127.0.0.1:%d\r\nUpgrade: websocket\r\nConnection: Upgrade\r\n"
                            "Sec-WebSocket-Key: %s\r\nSec-WebSocket-Version: 13\r\n\r\n" % (path, port, key)).encode())
        head = b""
        while not head.endswith(b"\r\n\r\n"):
            head += connection.recv(1)
        if b" 101 " not in head.split(b"\r\n")[0]:
            raise RuntimeError("no websocket: %r" % head)
        return connection

    def _bytes(self, count):
        while len(self.received) < count:
            piece = self.socket.recv(1 << 16)
            if not piece:
                raise RuntimeError("the browser closed the connection")
            self.received += piece
        result, self.received = self.received[:count], self.received[count:]
        return result

    def _send(self, text):
        data = text.encode()
        mask = os.urandom(4)
        if len(data) < 126:
            size = struct.pack("!B", 0x80 | len(data))
        elif len(data) < 1 << 16:
            size = struct.pack("!BH", 0x80 | 126, len(data))
        else:
            size = struct.pack("!BQ", 0x80 | 127, len(data))
        self.socket.sendall(b"\x81" + size + mask + bytes(b ^ mask[i % 4] for i, b in enumerate(data)))

    def _receive(self):
        text = b""
        while True:
            first, size = self._bytes(2)
            if size == 126:
                size, = struct.unpack("!H", self._bytes(2))
            elif size == 127:
                size, = struct.unpack("!Q", self._bytes(8))
            piece = self._bytes(size)
            if first & 0x0f in (0, 1):
                text += piece
                if first & 0x80:
                    return json.loads(text)

    def call(self, method, **parameters):
        """The result of a command; events that arrive meanwhile are kept."""
        self.last_id += 1
        self._send(json.dumps({"id": self.last_id, "method": method, "params": parameters}))
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
