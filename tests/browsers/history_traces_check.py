#!/usr/bin/env python3
"""The real browsers take a profile purged of some pages as their own, and their history goes on working.

history_traces_check.py TOOL, where TOOL is tidewell-history-traces. It makes a Chromium and a Firefox profile
headless, visiting ordinary and adult pages (Firefox also bookmarks an adult page), purges the adult pages with
TOOL (the purge itself, given the words that name them), checks that no database file of the profile holds their addresses or titles any more, then starts each browser
again on its purged profile, visits one more page and quits, and checks that the browser kept the database (every
kept page is there with its visits and its number), recorded the new visit, brought no removed page back and set
nothing aside as damaged. Exit status 77, with the reason, when chromium or firefox-esr is not installed.
"""

import os
import sqlite3
import subprocess
import sys
import tempfile
import time

sys.path.insert(0, os.path.dirname(os.path.abspath(__file__)))
import browsers  # noqa: E402

# The purge's words, and the pages they find.
WORDS = ["porn", "xhamster"]
REMOVED = sorted({path for path in browsers.VISITS if any(word in path for word in WORDS)})
BOOKMARKED = "/porn/clip1.html"
NEW_PAGE = "/news/weather.html"


class Failed(Exception):
    pass


def check(condition, message):
    if not condition:
        raise Failed(message)


def query(path, sql):
    db = sqlite3.connect(path)
    try:
        return db.execute(sql).fetchall()
    finally:
        db.close()


# What each browser keeps where: its history and favicon databases, and how to read pages and their visits.
CHROMIUM = {
    "name": "chromium",
    "layout": "chrome",
    "databases": ["History", "Favicons"],
    "pages": "SELECT id, url, (SELECT count(*) FROM visits WHERE visits.url = urls.id) FROM urls",
    "bookmarked": None,
}
FIREFOX = {
    "name": "firefox",
    "layout": "firefox",
    "databases": ["places.sqlite", "favicons.sqlite"],
    "pages": "SELECT id, url, (SELECT count(*) FROM moz_historyvisits WHERE place_id = moz_places.id) "
             "FROM moz_places",
    "bookmarked": BOOKMARKED,
}


def database_bytes(profile, browser):
    """Each database file of the browser and its companions (journal, WAL), with its bytes."""
    found = {}
    for name in os.listdir(profile):
        if any(name == db or name.startswith(db + "-") for db in browser["databases"]):
            with open(os.path.join(profile, name), "rb") as f:
                found[name] = f.read()
    return found


def check_profile(site, tool, profile, browser, start):
    def pages():
        """The site's pages in the history, by path: their number and how many visits they have."""
        rows = query(os.path.join(profile, browser["databases"][0]), browser["pages"])
        return {url[len(site.base):]: (page_id, visits) for page_id, url, visits in rows if url.startswith(site.base)}

    before = pages()
    check(all(path in before for path in REMOVED), "%s did not record the pages to remove" % browser["name"])
    texts = [site.url(path) for path in REMOVED] + [site.title(path) for path in REMOVED]
    # The bookmarked page stays for its bookmark, with its address and title: only its visits go.
    kept_texts = [site.url(browser["bookmarked"]), site.title(browser["bookmarked"])] if browser["bookmarked"] else []
    files = database_bytes(profile, browser)
    check(any(text.encode() in data for data in files.values() for text in texts),
          "%s wrote none of the removed addresses" % browser["name"])

    databases = [os.path.join(profile, db) for db in browser["databases"]]
    subprocess.run([tool, browser["layout"], databases[0], *WORDS], check=True)
    for name, data in database_bytes(profile, browser).items():
        for text in texts:
            check(text in kept_texts or text.encode() not in data, "%r is still in %s" % (text, name))

    again = start()
    again.visit([site.url(NEW_PAGE)])
    check(again.quit() == 0, "%s did not quit cleanly on the purged profile" % browser["name"])
    after = pages()
    for path, (page_id, visits) in before.items():
        if path in REMOVED and browser["bookmarked"] != path:
            check(path not in after, "%s brought %s back" % (browser["name"], path))
        elif path in REMOVED:
            check(after.get(path) == (page_id, 0), "the bookmarked page lost its row or kept its visits")
        else:
            check(after.get(path) == (page_id, visits), "%s lost or renumbered %s" % (browser["name"], path))
    check(after.get(NEW_PAGE, (0, 0))[1] == 1, "%s did not record the new visit" % browser["name"])
    for db in databases:
        check(query(db, "PRAGMA integrity_check") == [("ok",)], "%s is damaged" % db)
    set_aside = [name for name in os.listdir(profile) if "corrupt" in name.lower()]
    check(not set_aside, "%s set aside %s" % (browser["name"], set_aside))


def main():
    if len(sys.argv) != 2:
        sys.exit("usage: history_traces_check.py TIDEWELL-HISTORY-TRACES")
    for program in (browsers.CHROMIUM, browsers.FIREFOX):
        if not browsers.installed(program):
            print("skipped: %s is not installed (make browser-test installs it)" % program)
            return 77
    site = browsers.Site()
    try:
        with tempfile.TemporaryDirectory(prefix="tidewell-browsers-") as folder:
            began = time.monotonic()
            browsers.make_profiles(folder, site, bookmarked=BOOKMARKED)
            home = os.path.join(folder, "home")
            chromium, firefox = browsers.chromium_profile(folder), browsers.firefox_profile(folder)
            check_profile(site, sys.argv[1], chromium, CHROMIUM,
                          lambda: browsers.Chromium(home, os.path.dirname(chromium)))
            check_profile(site, sys.argv[1], firefox, FIREFOX, lambda: browsers.Firefox(home, firefox))
            print("both browsers took their purged profiles, in %.1f s" % (time.monotonic() - began))
    except Failed as failure:
        print("FAILED: %s" % failure)
        return 1
    finally:
        site.close()
    return 0


if __name__ == "__main__":
    sys.exit(main())
