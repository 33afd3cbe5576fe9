#!/usr/bin/env python3
"""page.py TQDOC FOLDER: tests the page of tqdoc diff --html in headless Chromium.

Drives the browser through a pipe with its DevTools protocol, as a reader would: with the pointer and the
keyboard. Checks what the page's own elements then are, and writes pictures to FOLDER. Exit status 1: a
check failed. Uses Python's standard library only.
"""

import base64
import json
import os
import pathlib
import shutil
import subprocess
import sys
import tempfile

# For expressions in the page.
HELPERS = """
  const one = (selector) => document.querySelector(selector);
  const all = (selector) => [...document.querySelectorAll(selector)];
  const style = (element) => getComputedStyle(element);
  const box = (selector) => one(selector).getBoundingClientRect();
"""
DATA = pathlib.Path(__file__).parent / "data"


class Browser:
    """A headless browser. It reads commands from its file descriptor 3 and writes answers to 4."""

    def __init__(self, profile):
        program = shutil.which("chromium") or sys.exit("chromium is not installed")
        commands, self.to_browser = os.pipe()
        self.from_browser, answers = os.pipe()
        # The shell gives both pipes the numbers that the browser expects.
        line = f'exec 3<&{commands} 4>&{answers}; exec "$@"'
        self.process = subprocess.Popen(
            [
                "bash",
                "-c",
                line,
                "-",
                program,
                "--headless=new",
                "--no-sandbox",
                "--disable-gpu",
                "--remote-debugging-pipe",
                "--no-first-run",
                "--disable-background-networking",
                "--hide-scrollbars",
                f"--user-data-dir={profile}",
            ],
            pass_fds=[commands, answers],
            stderr=subprocess.DEVNULL,
        )
        os.close(commands)
        os.close(answers)
        self.buffer = b""
        self.count = 0
        self.session = None
        self.events = []

    def send(self, method, **parameters):
        """Calls a method and returns its result. Keeps the events that come before it."""
        self.count += 1
        message = {"id": self.count, "method": method, "params": parameters}
        if self.session:
            message["sessionId"] = self.session
        os.write(self.to_browser, json.dumps(message).encode() + b"\0")
        while True:
            answer = self.receive()
            if answer.get("id") == self.count:
                if "error" in answer:
                    raise RuntimeError(f"{method}: {answer['error']}")
                return answer["result"]
            self.events.append(answer)

    def receive(self):
        while b"\0" not in self.buffer:
            block = os.read(self.from_browser, 1 << 20)
            if not block:
                raise RuntimeError("the browser ended")
            self.buffer += block
        message, self.buffer = self.buffer.split(b"\0", 1)
        return json.loads(message)

    def wait_for(self, event):
        while not any(each.get("method") == event for each in self.events):
            self.events.append(self.receive())

    def open(self, url, width=1280, height=900, theme="light", motion="no-preference"):
        """Opens a page in a new tab."""
        self.session = None
        target = self.send("Target.createTarget", url="about:blank")["targetId"]
        self.session = self.send("Target.attachToTarget", targetId=target, flatten=True)["sessionId"]
        self.events = []
        for domain in ("Page", "Runtime", "Network", "Log"):
            self.send(f"{domain}.enable")
        self.send(
            "Emulation.setDeviceMetricsOverride",
            width=width,
            height=height,
            deviceScaleFactor=1,
            mobile=False,
        )
        self.send(
            "Emulation.setEmulatedMedia",
            features=[
                {"name": "prefers-color-scheme", "value": theme},
                {"name": "prefers-reduced-motion", "value": motion},
            ],
        )
        self.send("Page.navigate", url=url)
        self.wait_for("Page.loadEventFired")

    def value(self, expression):
        """Returns the value of an expression in the page."""
        expression = f"(() => {{ {HELPERS} return {expression}; }})()"
        result = self.send("Runtime.evaluate", expression=expression, returnByValue=True, awaitPromise=True)
        if "exceptionDetails" in result:
            raise RuntimeError(f"{expression}: {result['exceptionDetails']}")
        return result["result"].get("value")

    def centre(self, selector):
        return self.value(
            f"(() => {{ const e = one({json.dumps(selector)}); "
            "e.scrollIntoView({block: 'nearest'}); const r = e.getBoundingClientRect(); "
            "return [r.x + r.width / 2, r.y + r.height / 2]; })()"
        )

    def pointer(self, kind, x, y, buttons=0):
        self.send(
            "Input.dispatchMouseEvent",
            type=kind,
            x=x,
            y=y,
            button="left" if buttons or kind == "mouseReleased" else "none",
            buttons=buttons,
            clickCount=1 if kind in ("mousePressed", "mouseReleased") else 0,
        )

    def point_at(self, selector):
        self.pointer("mouseMoved", *self.centre(selector))

    def click(self, selector):
        x, y = self.centre(selector)
        self.pointer("mouseMoved", x, y)
        self.pointer("mousePressed", x, y, 1)
        self.pointer("mouseReleased", x, y)

    def press(self, key, text=None):
        code = {
            "Tab": 9,
            "Enter": 13,
            "Escape": 27,
            "End": 35,
            "Home": 36,
            "ArrowLeft": 37,
            "ArrowUp": 38,
            "ArrowRight": 39,
            "ArrowDown": 40,
            " ": 32,
        }[key]
        text = {"Enter": "\r", " ": " "}.get(key, text)
        extra = {"text": text} if text else {}
        self.send(
            "Input.dispatchKeyEvent",
            type="keyDown",
            key=key,
            code="Space" if key == " " else key,
            windowsVirtualKeyCode=code,
            **extra,
        )
        self.send("Input.dispatchKeyEvent", type="keyUp", key=key, windowsVirtualKeyCode=code)

    def picture(self, path, whole=True):
        data = self.send("Page.captureScreenshot", captureBeyondViewport=whole)["data"]
        path.write_bytes(base64.b64decode(data))

    def __enter__(self):
        return self

    def __exit__(self, *_):
        self.process.kill()
        self.process.wait()


FAILURES = []


def check(what, is_so):
    print(("ok      " if is_so else "FAILED  ") + what)
    if not is_so:
        FAILURES.append(what)


SHOWN = "all('.on').map(e => e.tagName.toLowerCase() + (e.closest('figure')?.className ?? '')).sort().join()"
FOCUS = "document.activeElement.className + ' ' + document.activeElement.querySelector('code')?.textContent"


def check_links(browser):
    """The list and the pictures point at each other."""
    browser.point_at(".change.moved")
    check(
        "pointing at a moved node in the list shows it in both pictures",
        browser.value(SHOWN) == "button,button,pathnew,pathold,spannew,spanold",
    )
    check(
        "the mark tells its kind in words",
        browser.value("all('.tag.on .word').every(e => e.checkVisibility() && e.textContent === 'moved')"),
    )
    browser.point_at(".old .mark.removed")
    check(
        "pointing at a removed node in the old picture shows its change",
        browser.value("one('.change.removed').classList.contains('on')"),
    )
    check("what is removed is in the old picture only", browser.value(SHOWN) == "button,pathold,spanold")
    browser.point_at(".new .mark.added")
    check("what is added is in the new picture only", browser.value(SHOWN) == "button,pathnew,spannew")
    browser.pointer("mouseMoved", 2, 2)
    check("pointing elsewhere shows nothing", browser.value(SHOWN) == "")
    browser.click(".new .mark.added")
    browser.pointer("mouseMoved", 2, 2)
    check("a clicked mark stays shown", browser.value(SHOWN) == "button,pathnew,spannew")
    check("its change has the focus", "change added" in browser.value(FOCUS))
    check(
        "assistive technology is told",
        browser.value("one('.change.added').getAttribute('aria-pressed')") == "true",
    )


def check_keyboard(browser):
    browser.press("Escape")
    check("Escape ends it", browser.value("document.querySelectorAll('[aria-pressed=true]').length") == 0)
    browser.click("h1")  # the tab key goes on from there
    visited = []
    for _ in range(12):
        browser.press("Tab")
        visited.append(browser.value("`${document.activeElement.className || document.activeElement.value}`"))
        if "change" in visited[-1]:
            break
    check(
        f"the tab key reaches views, marks and list: {visited}",
        visited[:2] == ["side", "marks"] and "change" in visited[-1],
    )
    browser.press("Home")
    check("Home goes to the first change", "children[0].style.fill" in browser.value(FOCUS))
    check("the focused change is shown", "pathnew,pathold" in browser.value(SHOWN))
    browser.press("ArrowDown")
    check("the arrow goes to the next one", "children[1].path" in browser.value(FOCUS))
    browser.press("End")
    check("End goes to the last one", "children[4].path" in browser.value(FOCUS))
    browser.press("ArrowDown")
    check("the arrow stays there", "children[4].path" in browser.value(FOCUS))
    browser.press("Enter")
    check(
        "Enter keeps it shown", browser.value("document.activeElement.getAttribute('aria-pressed')") == "true"
    )
    browser.press("Escape")


def check_views(browser, folder, theme):
    side = "box('.old .picture').right <= box('.new .picture').left"
    check("the pictures are side by side", browser.value(side))
    browser.value("one('[value=side]').focus()")
    browser.press("ArrowRight")
    check(
        "the arrow key changes to the slider",
        browser.value("one('section').dataset.view") == "slide",
    )
    same = "JSON.stringify(box('.old .picture')) === JSON.stringify(box('.new .picture'))"
    check("the pictures are over each other", browser.value(same))
    clip = "style(one('.new .picture')).clipPath"
    half = browser.value(clip)
    check(f"half of the new picture is shown: {half}", "50%" in half)
    browser.value("one('.split').focus()")
    browser.press("ArrowRight")
    check("the arrow key moves the divider", "51%" in browser.value(clip))
    browser.press("Home")
    check(
        "Home shows the new version",
        browser.value(clip) in ("inset(0px 0px 0px 0%)", "inset(0px 0px 0px)", "inset(0px)"),
    )
    browser.press("End")
    browser.value("(one('.split').value = 50, one('.split').dispatchEvent(new Event('input')))")
    x, y = browser.centre(".divider")
    browser.pointer("mouseMoved", x, y)
    browser.pointer("mousePressed", x, y, 1)
    browser.pointer("mouseMoved", x - 100, y, 1)
    browser.pointer("mouseReleased", x - 100, y)
    check(
        "the pointer drags the divider",
        10 < float(browser.value("one('.split').value")) < 45,
    )
    browser.point_at(".new .mark.added")
    check("the marks of the shown half are under the pointer", "pathnew" in browser.value(SHOWN))
    browser.picture(folder / f"{theme}-slider.png")
    browser.click("[value=blink]")
    shown = "one('section').dataset.shown"
    first = browser.value(shown)
    changed = browser.value(
        f"new Promise(done => {{ const end = Date.now() + 5000; (function wait() {{ {shown} !== '{first}' "
        "? done(true) : Date.now() > end ? done(false) : setTimeout(wait, 50); })(); })"
    )
    check("the pictures blink", changed)
    browser.click(".flip")
    check(
        "showing the other version stops the blinking",
        browser.value("one('.auto').checked") is False,
    )
    before = browser.value(shown)
    browser.press(" ")
    check("the space bar shows the other version", browser.value(shown) != before)
    visible = "['old', 'new'].filter(e => style(one(`.${e} img`)).visibility === 'visible').join()"
    check("one version is visible", browser.value(visible) == browser.value(shown))
    browser.picture(folder / f"{theme}-blinking.png")
    browser.click(".marks")
    browser.click("[value=side]")
    check(
        "marks can be hidden",
        browser.value("all('.mark, .tag').every(e => style(e).visibility === 'hidden')"),
    )
    browser.click(".marks")


def check_contrast(browser, theme):
    """WCAG's ratio for each text, against the nearest ground."""
    low = browser.value(
        """(() => {
          const numbers = (colour) => colour.match(/[\\d.]+/g).map(Number);
          const linear = (v) => v <= 0.04045 ? v / 12.92 : ((v + 0.055) / 1.055) ** 2.4;
          const light = (colour) => {
            const [r, g, b] = numbers(colour).map((v) => linear(v / 255));
            return 0.2126 * r + 0.7152 * g + 0.0722 * b + 0.05;
          };
          const isOpaque = (colour) => numbers(colour).length < 4 || numbers(colour)[3] > 0.9;
          const ground = (element) => {
            const colour = style(element).backgroundColor;
            return isOpaque(colour) || !element.parentElement ? colour : ground(element.parentElement);
          };
          const hasText = (element) => [...element.childNodes].some((n) => n.nodeType === 3 && n.data.trim());
          return all("body *:not(script)").filter((e) => e.checkVisibility() && hasText(e)).map((e) => {
            const [a, b] = [light(style(e).color), light(ground(e))].sort();
            return [b / a, e.className, e.textContent.slice(0, 30)];
          }).filter(([ratio]) => ratio < 4.5);
        })()"""
    )
    check(f"texts have contrast in the {theme} theme {low}", low == [])


def check_network(browser):
    requests = [
        each["params"]["request"]["url"]
        for each in browser.events
        if each.get("method") == "Network.requestWillBeSent"
    ]
    check(
        f"nothing is loaded but the page: {len(requests)}",
        all(url.startswith(("file:", "data:")) for url in requests),
    )
    faults = [
        each for each in browser.events if each.get("method") in ("Runtime.exceptionThrown", "Log.entryAdded")
    ]
    check(f"no errors {faults}", faults == [])


def main(tqdoc, folder):
    folder = pathlib.Path(folder).resolve()
    folder.mkdir(parents=True, exist_ok=True)
    page, index = folder / "face.html", folder / "index.html"
    os.environ["XDG_CONFIG_HOME"] = str(folder / "config")
    for output, names in (
        (page, ["face.svg", "face-changed.svg"]),
        (
            index,
            [
                "face.svg",
                "face-changed.svg",
                "shapes.svg",
                "paint.svg",
                "face.svg",
                "face.svg",
                "cycle.svg",
                "face.svg",
            ],
        ),
    ):
        subprocess.run(
            [tqdoc, "diff", "--html", output, *(DATA / name for name in names)],
            stdout=subprocess.DEVNULL,
            stderr=subprocess.DEVNULL,
        )
    with tempfile.TemporaryDirectory(ignore_cleanup_errors=True) as profile, Browser(profile) as browser:
        for theme in ("light", "dark"):
            browser.open(page.as_uri(), theme=theme)
            dark = browser.value("style(document.body).backgroundColor") == "rgb(22, 24, 28)"
            check(f"the page has the {theme} theme", dark == (theme == "dark"))
            check_contrast(browser, theme)
            check_links(browser)
            browser.picture(folder / f"{theme}.png")
            check_keyboard(browser)
            check_views(browser, folder, theme)
            check_network(browser)
            browser.open(page.as_uri(), width=360, height=740, theme=theme)
            check("the page fits a phone", browser.value("document.documentElement.scrollWidth") <= 360)
            browser.picture(folder / f"{theme}-phone.png")
            browser.value("one('li:last-child .change').scrollIntoView({block: 'end'})")
            check("the pictures stay in sight above the list", browser.value("box('.old .picture').top >= 0"))
            browser.picture(folder / f"{theme}-phone-list.png", whole=False)
            browser.open(index.as_uri(), theme=theme)
            check(
                "the index leads to each drawing",
                browser.value("all('nav a').map(e => one(e.getAttribute('href')) !== null).join()")
                == "true,true,true",
            )
            browser.picture(folder / f"{theme}-index.png")
        browser.open(page.as_uri(), motion="reduce")
        browser.click("[value=blink]")
        check(
            "nothing blinks by itself for readers who prefer less motion",
            browser.value("new Promise(done => setTimeout(() => done(one('section').dataset.shown), 1200))")
            == "old",
        )
    print(f"{len(FAILURES)} checks failed; pictures are in {folder}")
    sys.exit(1 if FAILURES else 0)


if __name__ == "__main__":
    main(*sys.argv[1:])
