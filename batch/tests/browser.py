"""A headless Chromium, driven through its debugging pipe."""

import itertools
import json
import os
import shutil
import subprocess
import tempfile
import time

CHROMIUM = shutil.which("chromium")
OPTIONS = [
    "--headless", "--no-sandbox", "--disable-gpu", "--disable-quic", "--no-first-run",
    "--disable-background-networking", "--disable-component-update", "--disable-sync",
    "--disable-dev-shm-usage", "--window-size=1280,1000", "--remote-debugging-pipe"
]


class Browser:
    """Opens pages and evaluates JavaScript in them. Commands and answers end with a zero byte."""

    def __init__(self) -> None:
        self.profile = tempfile.mkdtemp()
        commands, self.commands = os.pipe()
        self.answers, answers = os.pipe()

        def hand_over() -> None:  # Chromium reads from descriptor 3 and writes to 4
            first, second = os.dup(commands), os.dup(answers)
            os.dup2(first, 3)
            os.dup2(second, 4)

        command = [CHROMIUM, *OPTIONS, f"--user-data-dir={self.profile}"]
        self.process = subprocess.Popen(command, preexec_fn=hand_over, close_fds=False,
                                        stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
        os.close(commands)
        os.close(answers)
        self.reader = os.fdopen(self.answers, "rb")
        self.numbers = itertools.count(1)
        target = self.send("Target.createTarget", url="about:blank")["targetId"]
        attached = self.send("Target.attachToTarget", targetId=target, flatten=True)
        self.session = attached["sessionId"]

    def close(self) -> None:
        del self.session
        self.send("Browser.close")
        try:
            self.process.wait(10)
        except subprocess.TimeoutExpired:
            self.process.kill()
            self.process.wait()
        os.close(self.commands)
        self.reader.close()
        shutil.rmtree(self.profile, ignore_errors=True)

    def send(self, method: str, **parameters) -> dict:
        command = {"id": next(self.numbers), "method": method, "params": parameters}
        if hasattr(self, "session"):
            command["sessionId"] = self.session
        os.write(self.commands, json.dumps(command).encode() + b"\0")
        while True:
            message = b""
            while not message.endswith(b"\0"):
                message += (byte := self.reader.read(1))
                if not byte:
                    raise RuntimeError("the browser ended")
            answer = json.loads(message[:-1])
            if answer.get("id") == command["id"]:
                return answer["result"]

    def evaluate(self, expression: str):
        result = self.send("Runtime.evaluate", expression=expression, returnByValue=True,
                           awaitPromise=True)
        if "exceptionDetails" in result:
            raise RuntimeError(result["exceptionDetails"])
        return result["result"].get("value")

    def open(self, url: str) -> None:
        self.send("Page.navigate", url="about:blank")
        self.send("Page.navigate", url=url)
        for _ in range(200):
            state = self.evaluate("location.href !== 'about:blank' && document.readyState")
            if state == "complete":
                return
            time.sleep(0.05)
        raise RuntimeError(f"{url} was not loaded")
