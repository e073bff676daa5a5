#!/usr/bin/env python3
"""Opens pages in headless Chromium as a large and a small screen show them, light and dark, and says what is wrong.

Wrong is: scrolling sideways, a table on a small screen, text that hardly stands out (WCAG 2.1, 1.4.3), a field without a label, an error on the
console. Status 0 when nothing is, 1 when something is, 77 where there is no Chromium.
"""
import argparse
import base64
import contextlib
import json
import os
import pathlib
import shutil
import subprocess
import sys
import tempfile
import time
import urllib.error
import urllib.request

SCREENS = [(1280, 900, False), (400, 800, True)]

# A phone's browser makes its window as wide as the page: the width of the screen is what counts.
CHECKS = r"""(width => {
  const wrong = [], root = document.documentElement;
  if (root.lang !== 'pl') wrong.push('the language is not said');
  if (root.scrollWidth > width) {
    const wide = [...document.querySelectorAll('main *')].filter(it => it.getBoundingClientRect().right > width + 1);
    wrong.push(`scrolls sideways (${root.scrollWidth} of ${width}): ` + wide.slice(0, 3).map(it => it.outerHTML.slice(0, 80)));
  }
  if (width < 500 && [...document.querySelectorAll('thead')].some(it => it.offsetParent !== null))
    wrong.push('a table is no pile of cards');
  for (const field of document.querySelectorAll('input, select'))
    if (field.labels.length === 0) wrong.push('no label: ' + field.outerHTML);
  const channels = text => text.match(/[\d.]+/g).map(Number);
  const luminance = color => channels(color).slice(0, 3).map(c => c / 255)
    .map(c => c <= 0.03928 ? c / 12.92 : ((c + 0.055) / 1.055) ** 2.4)
    .reduce((sum, c, i) => sum + c * [0.2126, 0.7152, 0.0722][i], 0);
  const ground = element => {
    for (let it = element; it; it = it.parentElement) {
      const color = getComputedStyle(it).backgroundColor;
      if (channels(color)[3] !== 0) return color;
    }
    return 'rgb(255, 255, 255)';
  };
  for (const element of document.querySelectorAll('body *')) {
    if (![...element.childNodes].some(it => it.nodeType === 3 && it.textContent.trim())) continue;
    const pair = [getComputedStyle(element).color, ground(element)].map(luminance).sort((a, b) => b - a);
    const ratio = (pair[0] + 0.05) / (pair[1] + 0.05);
    if (ratio < 4.5) wrong.push(`contrast ${ratio.toFixed(2)}: ` + element.outerHTML.slice(0, 80));
  }
  return wrong;
})"""


class Browser:
    """Chromium, steered through a pair of pipes."""

    def __init__(self, program, folder):
        to_browser, self.commands = os.pipe()
        self.answers, from_browser = os.pipe()
        # The browser expects its pipes as descriptors 3 and 4.
        script = f'exec 3<&{to_browser} 4>&{from_browser}; exec "$0" "$@"'
        options = ["--headless=new", "--remote-debugging-pipe", f"--user-data-dir={folder}", "--disable-gpu",
                   "--hide-scrollbars", "--no-first-run", "--disable-background-networking", "--no-proxy-server"]
        if os.geteuid() == 0:
            options.append("--no-sandbox")
        self.process = subprocess.Popen(["bash", "-c", script, program, *options], pass_fds=(to_browser, from_browser),
                                        stderr=subprocess.DEVNULL)
        os.close(to_browser)
        os.close(from_browser)
        self.read, self.number, self.session, self.events = b"", 0, None, []
        target = self.call("Target.createTarget", url="about:blank")["targetId"]
        self.session = self.call("Target.attachToTarget", targetId=target, flatten=True)["sessionId"]
        for domain in ("Page", "Runtime", "Log"):
            self.call(domain + ".enable")

    def receive(self):
        while b"\0" not in self.read:
            more = os.read(self.answers, 1 << 16)
            if not more:
                raise RuntimeError("the browser ended")
            self.read += more
        message, self.read = self.read.split(b"\0", 1)
        return json.loads(message)

    def call(self, method, **parameters):
        self.number += 1
        message = {"id": self.number, "method": method, "params": parameters}
        if self.session:
            message["sessionId"] = self.session
        os.write(self.commands, json.dumps(message).encode() + b"\0")
        while True:
            answer = self.receive()
            if answer.get("id") == self.number:
                if "error" in answer:
                    raise RuntimeError(f"{method}: {answer['error']['message']}")
                return answer["result"]
            self.events.append(answer)

    def wait_for_load(self):
        while not any(event.get("method") == "Page.loadEventFired" for event in self.events):
            self.events.append(self.receive())

    def open(self, address, width, height, mobile, scheme):
        self.call("Emulation.setDeviceMetricsOverride", width=width, height=height, deviceScaleFactor=1, mobile=mobile)
        self.call("Emulation.setEmulatedMedia", features=[{"name": "prefers-color-scheme", "value": scheme}])
        self.events.clear()
        self.call("Page.navigate", url=address)
        self.wait_for_load()

    def evaluate(self, script):
        answer = self.call("Runtime.evaluate", expression=script, returnByValue=True)
        if "exceptionDetails" in answer:
            raise RuntimeError(answer["exceptionDetails"]["exception"]["description"])
        return answer["result"].get("value")

    def console_errors(self):
        entries = [event["params"]["entry"] for event in self.events if event.get("method") == "Log.entryAdded"]
        return [entry["text"] for entry in entries if entry["level"] == "error"]

    def picture(self, file, width, most):
        height = min(self.evaluate("document.documentElement.scrollHeight"), most)
        clip = {"x": 0, "y": 0, "width": width, "height": height, "scale": 1}
        file.write_bytes(base64.b64decode(self.call("Page.captureScreenshot", clip=clip, captureBeyondViewport=True)["data"]))

    def close(self):
        os.close(self.commands)
        self.process.wait(20)


def look(browser, options, name, path):
    wrong = []
    for width, height, mobile in SCREENS:
        for scheme in ("light", "dark"):
            browser.open(options.address + path, width, height, mobile, scheme)
            wrong += [f"{path} at {width}, {scheme}: {it}" for it in browser.evaluate(f"{CHECKS}({width})") + browser.console_errors()]
            if options.pictures and (scheme == "light" or name == options.dark):
                file = f"sandbox-{name}-{width}{'-dark' if scheme == 'dark' else ''}.png"
                browser.picture(options.pictures / file, width, options.height)
    return wrong


def submit(browser, options, path, field, value):
    """Fills a field, sends its form, and expects to come back to the page."""
    browser.open(options.address + path, *SCREENS[0], "light")
    browser.evaluate(f"document.getElementsByName({json.dumps(field)})[0].value = {json.dumps(value)}")
    browser.events.clear()
    browser.evaluate(f"document.getElementsByName({json.dumps(field)})[0].form.requestSubmit()")
    browser.wait_for_load()
    arrived = browser.evaluate("location.pathname")
    return [] if arrived == path else [f"{path}: {field}={value} leads to {arrived}: {browser.evaluate('document.title')}"]


def live(browser, options, path):
    """Lets a request arrive while somebody types and reads at the end of the page, which has to take it over and to disturb neither."""
    browser.open(options.address + path, *SCREENS[0], "light")
    browser.evaluate("scrollTo(0, document.documentElement.scrollHeight); document.querySelector('input').value = 'pisane'")
    reader = """[...document.querySelectorAll('[data-live] a')].find(it => it.getAttribute('href') === window.held)"""
    browser.evaluate("window.held = [...document.querySelectorAll('[data-live] a')].find(it => it.getBoundingClientRect().top > 0).getAttribute('href')")
    before = browser.evaluate(f"{reader}.getBoundingClientRect().top")
    news = f"news-{time.monotonic_ns()}"
    direct = urllib.request.build_opener(urllib.request.ProxyHandler({}))
    with contextlib.suppress(urllib.error.HTTPError):
        direct.open(f"{options.address}/v2/{news}")
    for _ in range(100):
        if browser.evaluate(f"document.querySelector('main').textContent.includes('{news}')"):
            break
        time.sleep(0.1)
    else:
        return [f"{path}: what arrived is not shown"] + browser.console_errors()
    wrong = []
    if abs(browser.evaluate(f"{reader}.getBoundingClientRect().top") - before) > 1:
        wrong.append(f"{path}: the row that is read moves")
    if browser.evaluate("document.querySelector('input').value") != "pisane":
        wrong.append(f"{path}: what was typed is lost")
    browser.evaluate("document.querySelector('#na-zywo button').click()")
    if "wyłączone" not in browser.evaluate("document.getElementById('na-zywo').textContent"):
        wrong.append(f"{path}: does not say that it is switched off")
    browser.evaluate("document.querySelector('#na-zywo button').click()")
    return wrong


def main():
    parser = argparse.ArgumentParser(description=__doc__)
    parser.add_argument("address", help="of the sandbox, without a path")
    parser.add_argument("pages", nargs="+", metavar="NAME=PATH")
    parser.add_argument("--submit", nargs=3, action="append", default=[], metavar=("PATH", "FIELD", "VALUE"))
    parser.add_argument("--live", action="append", default=[], metavar="PATH", help="a page with a list of requests and a field")
    parser.add_argument("--pictures", type=pathlib.Path, help="folder that gets a picture of each page at each width")
    parser.add_argument("--dark", help="name of the page that is also pictured dark")
    parser.add_argument("--height", type=int, default=1400, help="where a picture is cut")
    options = parser.parse_args()
    program = shutil.which("chromium")
    if not program:
        print("there is no chromium")
        return 77
    wrong = []
    with tempfile.TemporaryDirectory(ignore_cleanup_errors=True) as folder:
        browser = Browser(program, folder)
        try:
            for path, field, value in options.submit:
                wrong += submit(browser, options, path, field, value)
            for page in options.pages:
                wrong += look(browser, options, *page.split("=", 1))
            for path in options.live:
                wrong += live(browser, options, path)
        finally:
            browser.close()
    print("\n".join(wrong) or f"{len(options.pages)} pages are as they should be")
    return 1 if wrong else 0


if __name__ == "__main__":
    sys.exit(main())
