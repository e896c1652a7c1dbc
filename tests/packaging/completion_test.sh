#!/usr/bin/env bash
# The bash completion of tidewell-cli offers what the program itself takes: every command and option its help
# lists, the inventory kinds and schedule actions it accepts, and the layouts.
# Usage: completion_test.sh TIDEWELL_CLI COMPLETION_SCRIPT
set -eo pipefail
cli=$1
source "$2"

failures=0
fail() {
    echo "FAIL: $*"
    failures=$((failures + 1))
}

# What the completion offers for a command line whose last word is being typed, one per line, sorted.
offers() {
    COMP_WORDS=("$@")
    COMP_CWORD=$((${#COMP_WORDS[@]} - 1))
    COMPREPLY=()
    _tidewell_cli
    if [ ${#COMPREPLY[@]} -gt 0 ]; then printf '%s\n' "${COMPREPLY[@]}" | sort; fi
}

# Every line of the first list is in the second.
offered() {
    local missing
    missing=$(comm -23 <(echo "$2" | sort -u) <(echo "$3" | sort -u))
    [ -z "$missing" ] || fail "$1: not offered: $(echo $missing)"
}

help=$("$cli" --help)
help_all=$("$cli" --help-all)

commands=$(sed -n '/^Subcommands:/,/^$/p' <<<"$help" | awk 'NR > 1 && NF { print $1 }' | sort)
[ "$(wc -l <<<"$commands")" -ge 6 ] || fail "the help lists too few commands: $commands"
[ "$(offers tidewell-cli '')" = "$commands" ] || fail "commands: offered $(offers tidewell-cli '' | xargs)"
[ "$(offers tidewell-cli --root /tmp --user=ann s)" = "$(grep '^s' <<<"$commands")" ] ||
    fail "a command after options and their values: offered $(offers tidewell-cli --root /tmp --user=ann s | xargs)"

global=$(sed -n '/^Options:/,/^$/p' <<<"$help" | grep -oE '^ +(-[a-z],)?--[a-z-]+' | sed 's/.*--/--/')
offered "global options" "$global" "$(offers tidewell-cli --)"

for command in $commands; do
    options=$(sed -n "/^Command $command:/,/^Command /p" <<<"$help_all" | grep -oE '^  --[a-z-]+' | tr -d ' ' || true)
    [ -z "$options" ] || offered "$command options" "$options" "$(offers tidewell-cli "$command" --)"
done

# The kinds and actions the program accepts, from its own refusal of a word it does not know.
accepted() {
    { "$cli" "$1" no-such-word 2>&1 || true; } |
        sed -n -e 's/.*not in {\(.*\)}.*/\1/p' -e 's/.*; the kinds are: \(.*\)$/\1/p' | tr -d ' ' | tr , '\n' | sort
}
kinds=$(accepted inventory)
[ -n "$kinds" ] || fail "the program named no inventory kinds"
[ "$(offers tidewell-cli inventory '')" = "$kinds" ] || fail "kinds: offered $(offers tidewell-cli inventory '' | xargs)"
[ -z "$(offers tidewell-cli inventory apps '')" ] || fail "a second kind was offered"
actions=$(accepted schedule)
[ -n "$actions" ] || fail "the program named no schedule actions"
[ "$(offers tidewell-cli schedule '')" = "$actions" ] || fail "actions: offered $(offers tidewell-cli schedule '' | xargs)"

[ "$(offers tidewell-cli --layout '' | xargs)" = "auto linux macos" ] || fail "layouts"
[ "$(offers tidewell-cli --layout = m | xargs)" = "macos" ] || fail "a layout after --layout="

if [ "$failures" -gt 0 ]; then
    exit 1
fi
echo "completion offers every command, option, kind, action and layout"
