"""Drives the real Debian browsers headless, for the checks that need profiles a browser made itself.

Only the Python standard library is used: Chromium is driven over its DevTools protocol on a pipe
(--remote-debugging-pipe, file descriptors 3 and 4), Firefox over Marionette on a port it picks itself. Each
browser runs with a home folder and a profile folder of its own, so nothing of the person running it is read or
changed.
"""

import http.server
import json
import os
import shutil
import socket
import subprocess
import threading
import time
import urllib.parse

CHROMIUM = "chromium"
FIREFOX = "firefox-esr"

# Each page has a title and an icon of its own (the icon of /a/b.html is /icons/a/b.png), so that every page
# leaves a visit, a title, an icon and the page's mapping to it.
PAGE = ("<!doctype html><html><head><meta charset=utf-8><title>{title}</title>"
        "<link rel=icon href={icon}></head><body><h1>{title}</h1><a href=/>home</a></body></html>")
# One red pixel, as a PNG.
ICON = bytes.fromhex("89504e470d0a1a0a0000000d49484452000000010000000108060000001f15c4890000000d4944415478"
                     "9c63f8cfc0f01f00050001ff89993d1d0000000049454e44ae426082")
RED = "255,0,0,255"

# How long a browser may take to start, to store a page's icon, or to quit.
PATIENCE = 60


def installed(program):
    return shutil.which(program) is not None


def _poll(condition):
    """Asks condition() every tenth of a second until it holds; False if it never did within PATIENCE."""
    deadline = time.monotonic() + PATIENCE
    while not condition():
        if time.monotonic() > deadline:
            return False
        time.sleep(0.1)
    return True


class Site:
    """A web site on a free port of 127.0.0.1 whose every page is a titled page with its own icon."""

    def __init__(self):
        class Handler(http.server.BaseHTTPRequestHandler):
            def do_GET(self):
                path = urllib.parse.urlsplit(self.path).path
                if path.endswith(".png"):
                    body, kind = ICON, "image/png"
                else:
                    body, kind = PAGE.format(title=Site.title(path), icon=Site.icon(path)).encode(), "text/html"
                self.send_response(200)
                self.send_header("Content-Type", kind)
                self.send_header("Content-Length", str(len(body)))
                self.end_headers()
                self.wfile.write(body)

            def log_message(self, *args):
                pass

        self._server = http.server.ThreadingHTTPServer(("127.0.0.1", 0), Handler)
        self.base = "http://127.0.0.1:%d" % self._server.server_address[1]
        threading.Thread(target=self._server.serve_forever, daemon=True).start()

    def url(self, path):
        return self.base + path

    @staticmethod
    def title(path):
        return "Title of " + path.strip("/")

    @staticmethod
    def icon(path):
        return "/icons" + os.path.splitext(path)[0] + ".png"

    def close(self):
        self._server.shutdown()
        self._server.server_close()


def _environment(home):
    env = {k: v for k, v in os.environ.items() if not k.startswith(("XDG_", "DISPLAY", "WAYLAND", "DBUS"))}
    env.update(HOME=home, XDG_CONFIG_HOME=os.path.join(home, ".config"), XDG_CACHE_HOME=os.path.join(home, ".cache"),
               MOZ_HEADLESS="1")
    return env


# The colour at the centre of the first image of a page, as "r,g,b,a".
_CENTRE_PIXEL = """new Promise(done => {
  const image = document.images[0];
  if (!image) return done("");
  const read = () => {
    const canvas = document.createElement("canvas");
    canvas.width = canvas.height = 16;
    const context = canvas.getContext("2d");
    context.drawImage(image, 0, 0, 16, 16);
    done([...context.getImageData(8, 8, 1, 1).data].join(","));
  };
  image.complete ? read() : (image.onload = read, image.onerror = () => done(""));
})"""


class Chromium:
    """Chromium on a profile folder (its --user-data-dir), driven over the DevTools pipe."""

    def __init__(self, home, user_data_dir):
        os.makedirs(home, exist_ok=True)
        commands_r, self._commands = os.pipe()
        self._answers, answers_w = os.pipe()

        def descriptors():
            # The browser reads commands on 3 and answers on 4; copies first, so neither end is overwritten.
            read_end, write_end = os.dup(commands_r), os.dup(answers_w)
            os.dup2(read_end, 3)
            os.dup2(write_end, 4)

        self._process = subprocess.Popen(
            [CHROMIUM, "--headless", "--remote-debugging-pipe", "--user-data-dir=" + user_data_dir, "--no-sandbox",
             "--disable-gpu", "--no-first-run", "--disable-background-networking", "--disable-component-update",
             "--disable-sync", "--password-store=basic", "about:blank"],
            env=_environment(home), stdin=subprocess.DEVNULL, stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL,
            preexec_fn=descriptors, close_fds=False)
        os.close(commands_r)
        os.close(answers_w)
        self._reader = os.fdopen(self._answers, "rb")
        self._buffer = b""
        self._last_id = 0
        self._events = []

    def _read_message(self):
        while b"\0" not in self._buffer:
            chunk = self._reader.read1(65536)
            if not chunk:
                raise RuntimeError("chromium closed its DevTools pipe")
            self._buffer += chunk
        message, self._buffer = self._buffer.split(b"\0", 1)
        return json.loads(message)

    def send(self, method, params=None, session=None):
        self._last_id += 1
        message = {"id": self._last_id, "method": method, "params": params or {}}
        if session:
            message["sessionId"] = session
        os.write(self._commands, json.dumps(message).encode() + b"\0")
        while True:
            answer = self._read_message()
            if answer.get("id") == self._last_id:
                if "error" in answer:
                    raise RuntimeError("%s: %s" % (method, answer["error"]))
                return answer.get("result", {})
            self._events.append(answer)

    def _wait_event(self, method, session):
        while True:
            for i, event in enumerate(self._events):
                if event.get("method") == method and event.get("sessionId") == session:
                    del self._events[i]
                    return event
            self._events.append(self._read_message())

    def _tab(self):
        target = self.send("Target.createTarget", {"url": "about:blank"})["targetId"]
        session = self.send("Target.attachToTarget", {"targetId": target, "flatten": True})["sessionId"]
        self.send("Page.enable", session=session)
        return session

    def _open(self, session, url):
        self.send("Page.navigate", {"url": url}, session=session)
        self._wait_event("Page.loadEventFired", session)

    def _icon_stored(self, session, url):
        # The browser's own favicon page reads the favicon database behind every write queued before it: once it
        # shows the page's red icon rather than the grey default, the mapping is stored.
        self._open(session, "chrome://favicon2/?size=16&scaleFactor=1x&allowGoogleServerFallback=0&pageUrl="
                   + urllib.parse.quote(url, safe=""))
        pixel = self.send("Runtime.evaluate", {"expression": _CENTRE_PIXEL, "awaitPromise": True}, session=session)
        return pixel.get("result", {}).get("value") == RED

    def visit(self, urls):
        """Opens each URL in one tab, in order, each until the browser has stored its icon for the page."""
        page, probe = self._tab(), self._tab()
        for url in urls:
            self._open(page, url)
            if not _poll(lambda: self._icon_stored(probe, url)):
                raise RuntimeError("chromium did not store the icon of " + url)

    def quit(self):
        """Closes the browser the way a person does, so it writes what it holds; returns its exit status."""
        try:
            self.send("Browser.close")
        except RuntimeError:
            pass  # the pipe may close before the answer comes
        status = self._process.wait(timeout=PATIENCE)
        self._reader.close()
        os.close(self._commands)
        return status


class Firefox:
    """firefox-esr on a profile folder, driven over Marionette."""

    def __init__(self, home, profile):
        os.makedirs(profile, exist_ok=True)
        # Marionette on a port of the browser's choosing, which it writes to MarionetteActivePort; no first-run
        # pages, default-browser question or updates.
        with open(os.path.join(profile, "user.js"), "w") as prefs:
            for name, value in [("marionette.port", 0), ("browser.shell.checkDefaultBrowser", False),
                                ("browser.startup.homepage_override.mstone", "ignore"),
                                ("browser.aboutwelcome.enabled", False), ("app.update.disabledForTesting", True),
                                ("datareporting.policy.dataSubmissionEnabled", False),
                                ("toolkit.telemetry.reportingpolicy.firstRun", False)]:
                prefs.write("user_pref(%s, %s);\n" % (json.dumps(name), json.dumps(value)))
        port_file = os.path.join(profile, "MarionetteActivePort")
        if os.path.exists(port_file):
            os.remove(port_file)
        self._process = subprocess.Popen(
            [FIREFOX, "--headless", "--marionette", "--remote-allow-system-access", "--no-remote", "--profile",
             profile],
            env=_environment(home), stdin=subprocess.DEVNULL, stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)

        def port():
            try:
                with open(port_file) as f:
                    return int(f.read().strip())
            except (OSError, ValueError):
                return None

        if not _poll(lambda: port() is not None or self._process.poll() is not None) or port() is None:
            raise RuntimeError("firefox-esr did not open Marionette")
        self._socket = socket.create_connection(("127.0.0.1", port()), timeout=PATIENCE)
        self._stream = self._socket.makefile("rb")
        self._last_id = 0
        self._read()  # the greeting
        self.send("WebDriver:NewSession", {})

    def _read(self):
        length = b""
        while (c := self._stream.read(1)) != b":":
            if not c:
                raise RuntimeError("firefox-esr closed Marionette")
            length += c
        return json.loads(self._stream.read(int(length)))

    def send(self, name, params):
        self._last_id += 1
        data = json.dumps([0, self._last_id, name, params]).encode()
        self._socket.sendall(str(len(data)).encode() + b":" + data)
        answer = self._read()
        if answer[2] is not None:
            raise RuntimeError("%s: %s" % (name, answer[2]))
        return answer[3]

    def _privileged(self, script, *args):
        """Runs an asynchronous script with the browser's own rights; it ends by calling its last argument."""
        self.send("Marionette:SetContext", {"value": "chrome"})
        try:
            return self.send("WebDriver:ExecuteAsyncScript", {"script": script, "args": list(args)}).get("value")
        finally:
            self.send("Marionette:SetContext", {"value": "content"})

    def _icon_stored(self, url):
        # Asked of the browser's own database connection, which sees its writes in order.
        return self._privileged(
            "const [url, done] = arguments;"
            "PlacesUtils.promiseDBConnection()"
            ".then(db => db.execute('SELECT 1 FROM moz_pages_w_icons WHERE page_url = :url', {url}))"
            ".then(rows => done(rows.length > 0), e => done(String(e)));", url) is True

    def visit(self, urls):
        """Opens each URL in turn, each until the browser has stored its icon for the page."""
        for url in urls:
            self.send("WebDriver:Navigate", {"url": url})
            if not _poll(lambda: self._icon_stored(url)):
                raise RuntimeError("firefox-esr did not store the icon of " + url)

    def bookmark(self, url, title):
        """Bookmarks a page, as a person does with the star."""
        answer = self._privileged(
            "const [url, title, done] = arguments;"
            "PlacesUtils.bookmarks.insert({parentGuid: PlacesUtils.bookmarks.unfiledGuid, url, title})"
            ".then(() => done(true), e => done(String(e)));", url, title)
        if answer is not True:
            raise RuntimeError("firefox-esr did not bookmark %s: %s" % (url, answer))

    def quit(self):
        """Quits the way a person does, so the profile is written and closed; returns the exit status."""
        try:
            self.send("Marionette:Quit", {"flags": ["eAttemptQuit"]})
        except (RuntimeError, OSError):
            pass  # the connection may close before the answer comes
        status = self._process.wait(timeout=PATIENCE)
        self._socket.close()
        return status


# The visits of a profile made by make_profiles: pages of ordinary sites and adult ones, some twice.
VISITS = ["/news/today.html", "/porn/clip1.html", "/recipes/soup.html", "/videos/xhamster-best.html",
          "/travel/rome.html", "/porn/clip1.html", "/news/today.html"]


def chromium_profile(folder):
    """The profile folder (the one holding "History") of a Chromium user-data-dir made by make_profiles."""
    return os.path.join(folder, "chromium", "Default")


def firefox_profile(folder):
    return os.path.join(folder, "firefox")


def make_profiles(folder, site, bookmarked=None):
    """Makes a Chromium and a Firefox profile under folder, each having visited VISITS on the site, and closes
    both browsers. Firefox also bookmarks the page at path `bookmarked`, if given."""
    home = os.path.join(folder, "home")
    chromium = Chromium(home, os.path.join(folder, "chromium"))
    chromium.visit([site.url(path) for path in VISITS])
    if chromium.quit() != 0:
        raise RuntimeError("chromium did not quit cleanly")
    firefox = Firefox(home, firefox_profile(folder))
    firefox.visit([site.url(path) for path in VISITS])
    if bookmarked:
        firefox.bookmark(site.url(bookmarked), "A page kept on purpose")
    if firefox.quit() != 0:
        raise RuntimeError("firefox-esr did not quit cleanly")


if __name__ == "__main__":
    import sys

    # browsers.py profiles FOLDER: makes the two profiles, for looking at what the browsers write.
    if len(sys.argv) != 3 or sys.argv[1] != "profiles":
        sys.exit("usage: browsers.py profiles FOLDER")
    site = Site()
    try:
        make_profiles(sys.argv[2], site)
        print(chromium_profile(sys.argv[2]))
        print(firefox_profile(sys.argv[2]))
    finally:
        site.close()
