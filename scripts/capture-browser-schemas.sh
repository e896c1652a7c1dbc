#!/usr/bin/env bash
# Captures the schemas of the browsers' history and favicon databases from fresh profiles that the installed
# Debian chromium and firefox-esr make headless, into tests/fixtures/<browser>-<major version>-<file>.sql: the
# CREATE statements of tables, indexes, triggers and views as the browser wrote them, no rows. The tests build
# their databases from every such file, so a newer browser's schema is added beside the older ones.
set -euo pipefail
cd "$(dirname "$0")/.."

for program in chromium firefox-esr sqlite3 python3; do
    command -v "$program" >/dev/null || { echo "$program is not installed (scripts/deps.sh browsers)" >&2; exit 1; }
done

work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
python3 tests/browsers/browsers.py profiles "$work" >/dev/null

# "Chromium 156.0.8078.79 built on ..." and "Mozilla Firefox 153.7.0esr".
chromium_version=$(chromium --version 2>/dev/null | grep -o '[0-9][0-9.]*' | head -n 1)
firefox_version=$(firefox-esr --version 2>/dev/null | grep -o '[0-9][0-9.]*esr' | head -n 1)

capture() { # capture DATABASE BROWSER VERSION NAME
    local out="tests/fixtures/$2-${3%%.*}-$4.sql"
    {
        echo "-- The schema of $4 as $2 $3 makes it in a fresh profile (scripts/capture-browser-schemas.sh)."
        # In the order the browser made them, so each index follows its table. SQLite's own tables
        # (sqlite_sequence, sqlite_stat1) come back by themselves.
        sqlite3 -readonly "$1" \
            "SELECT sql || ';' FROM sqlite_master WHERE sql IS NOT NULL AND name NOT LIKE 'sqlite\_%' ESCAPE '\' ORDER BY rowid"
    } >"$out"
    echo "$out"
}

chromium_profile="$work/chromium/Default"
firefox_profile="$work/firefox"
capture "$chromium_profile/History" chromium "$chromium_version" History
capture "$chromium_profile/Favicons" chromium "$chromium_version" Favicons
capture "$firefox_profile/places.sqlite" firefox "$firefox_version" places.sqlite
capture "$firefox_profile/favicons.sqlite" firefox "$firefox_version" favicons.sqlite
