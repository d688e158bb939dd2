"""A browser without a window, driven through pipes by its DevTools protocol."""

import base64
import json
import os
import pathlib
import select
import shutil
import struct
import subprocess
import tempfile
import time
import zlib

PROGRAMS = ("chromium", "chromium-browser", "google-chrome")
SECONDS = 60


def program():
    """Returns the path of a browser, or None."""
    return next((path for name in PROGRAMS if (path := shutil.which(name))), None)


class Browser:
    """One page of a browser. Keeps every message of the console and every request."""

    def __init__(self):
        self.folder = tempfile.mkdtemp(prefix="gsl-view-")
        to_read, self.to_browser = os.pipe()
        self.from_browser, to_write = os.pipe()
        command = [
            program(), "--headless=new", "--no-sandbox", "--disable-gpu", "--use-angle=swiftshader",
            "--enable-unsafe-swiftshader", "--remote-debugging-pipe", "--no-first-run", "--hide-scrollbars",
            "--disable-background-networking", "--disable-component-update", "--force-device-scale-factor=1",
            f"--user-data-dir={self.folder}", "about:blank",
        ]

        def take_pipes():
            # The browser reads from descriptor 3 and writes to descriptor 4.
            high = [os.dup(descriptor) if descriptor in (3, 4) else descriptor for descriptor in (to_read, to_write)]
            os.dup2(high[0], 3)
            os.dup2(high[1], 4)

        self.process = subprocess.Popen(command, preexec_fn=take_pipes, close_fds=False, start_new_session=True,
                                        stdin=subprocess.DEVNULL, stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
        os.close(to_read)
        os.close(to_write)
        self.number = 0
        self.buffer = b""
        self.problems, self.requests = [], []
        self.session = None
        target = next(info for info in self.call("Target.getTargets")["targetInfos"] if info["type"] == "page")
        self.session = self.call("Target.attachToTarget", targetId=target["targetId"], flatten=True)["sessionId"]
        for domain in ("Page", "Runtime", "Log", "Network"):
            self.call(f"{domain}.enable")

    def close(self):
        try:
            self.session = None
            self.call("Browser.close")
            self.process.wait(10)
        except (OSError, TimeoutError, subprocess.TimeoutExpired):
            self.process.kill()
            self.process.wait()
        os.close(self.to_browser)
        os.close(self.from_browser)
        shutil.rmtree(self.folder, ignore_errors=True)

    def __enter__(self):
        return self

    def __exit__(self, *_):
        self.close()

    def message(self, deadline):
        """Returns the next message, which ends with a zero byte."""
        while b"\0" not in self.buffer:
            if not select.select([self.from_browser], [], [], max(0.0, deadline - time.monotonic()))[0]:
                raise TimeoutError("the browser does not answer")
            part = os.read(self.from_browser, 1 << 20)
            if not part:
                raise OSError("the browser has ended")
            self.buffer += part
        text, self.buffer = self.buffer.split(b"\0", 1)
        return json.loads(text)

    def note(self, event):
        method, about = event.get("method"), event.get("params", {})
        if method == "Runtime.exceptionThrown":
            details = about["exceptionDetails"]
            self.problems.append(details.get("exception", {}).get("description", details["text"]))
        elif method == "Log.entryAdded" and about["entry"]["level"] in ("error", "warning"):
            # A picture of the page makes the driver say that it had to wait.
            if "GPU stall due to ReadPixels" not in about["entry"]["text"]:
                self.problems.append(about["entry"]["text"])
        elif method == "Runtime.consoleAPICalled" and about["type"] in ("error", "warning", "assert"):
            self.problems.append(" ".join(str(a.get("value", a.get("description"))) for a in about["args"]))
        elif method == "Network.requestWillBeSent":
            self.requests.append(about["request"]["url"])

    def call(self, method, **parameters):
        self.number += 1
        request = {"id": self.number, "method": method, "params": parameters}
        if self.session:
            request["sessionId"] = self.session
        os.write(self.to_browser, json.dumps(request).encode() + b"\0")
        deadline = time.monotonic() + SECONDS
        while True:
            answer = self.message(deadline)
            if answer.get("id") == self.number:
                if "error" in answer:
                    raise RuntimeError(f"{method}: {answer['error']['message']}")
                return answer["result"]
            self.note(answer)

    def run(self, expression):
        """Returns the value of an expression of JavaScript, waiting for a promise."""
        result = self.call("Runtime.evaluate", expression=expression, returnByValue=True, awaitPromise=True,
                           userGesture=True)
        if "exceptionDetails" in result:
            raise RuntimeError(f"{expression}: {result['exceptionDetails']}")
        return result["result"].get("value")

    def wait(self, condition):
        deadline = time.monotonic() + SECONDS
        while not self.run(condition):
            if time.monotonic() > deadline:
                raise TimeoutError(f"it never becomes true: {condition}; the page says {self.problems}")
            time.sleep(0.02)

    def settle(self):
        """Waits until what was asked for is drawn."""
        self.run("new Promise((done) => requestAnimationFrame(() => requestAnimationFrame(() => done(true))))")

    def size(self, width, height, mobile=False):
        self.call("Emulation.setDeviceMetricsOverride", width=width, height=height, deviceScaleFactor=1, mobile=mobile)

    def prefer(self, scheme):
        self.call("Emulation.setEmulatedMedia", features=[{"name": "prefers-color-scheme", "value": scheme}])

    def open(self, path):
        self.problems.clear()
        self.requests.clear()
        self.call("Page.navigate", url=pathlib.Path(path).resolve().as_uri())
        self.wait("document.documentElement?.dataset.state === 'ready'")
        self.settle()

    def key(self, name, code=None, shift=False):
        about = {"key": name, "code": code or name, "modifiers": 8 if shift else 0,
                 "windowsVirtualKeyCode": {"Enter": 13, " ": 32}.get(name, 0)}
        if len(name) == 1:
            about["text"] = name
        self.call("Input.dispatchKeyEvent", type="keyDown", **about)
        self.call("Input.dispatchKeyEvent", type="keyUp", **{k: v for k, v in about.items() if k != "text"})
        self.settle()

    def drag(self, x, y, dx, dy):
        at = {"button": "left", "buttons": 1, "clickCount": 1}
        self.call("Input.dispatchMouseEvent", type="mousePressed", x=x, y=y, **at)
        for step in range(1, 5):
            self.call("Input.dispatchMouseEvent", type="mouseMoved", x=x + dx * step / 4, y=y + dy * step / 4, **at)
        self.call("Input.dispatchMouseEvent", type="mouseReleased", x=x + dx, y=y + dy, **at)
        self.settle()

    def picture(self, **clip):
        """Returns a PNG of the page, or of a part: x, y, width, height, scale."""
        more = {"clip": {"scale": 1, **clip}} if clip else {}
        return base64.b64decode(self.call("Page.captureScreenshot", format="png", **more)["data"])


def pixels(png):
    """Returns the width and the rows of a PNG with 8 bits a channel: a list of tuples for each row."""
    place, data = 8, b""
    while place < len(png):
        size, kind = struct.unpack(">I4s", png[place:place + 8])
        body = png[place + 8:place + 8 + size]
        if kind == b"IHDR":
            width, _, depth, colour = struct.unpack(">IIBB", body[:10])
            channels = {2: 3, 6: 4}[colour]
            assert depth == 8
        elif kind == b"IDAT":
            data += body
        place += size + 12
    data, stride = zlib.decompress(data), width * channels
    rows, before = [], bytearray(stride)
    for start in range(0, len(data), stride + 1):
        row = bytearray(data[start + 1:start + 1 + stride])
        for k in range(stride):
            left = row[k - channels] if k >= channels else 0
            corner = before[k - channels] if k >= channels else 0
            row[k] = (row[k] + filtered(data[start], left, before[k], corner)) & 255
        rows.append([tuple(row[k:k + 3]) for k in range(0, stride, channels)])
        before = row
    return width, rows


def filtered(kind, left, up, corner):
    """Returns what the filter of a row of a PNG has subtracted."""
    if kind == 4:
        guess = left + up - corner
        return min((left, up, corner), key=lambda number: abs(guess - number))
    return (0, left, up, (left + up) // 2)[kind]
