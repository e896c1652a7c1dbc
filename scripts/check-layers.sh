#!/usr/bin/env bash
# Fails when a file of src/<layer>/ includes a header of a layer that src/layers.txt does not let it use, directly
# or through the layers it uses. Files directly in src/ (the programs' main) are not in a layer. CTest runs this
# with the tests; the build itself fails on such an include too, since the header is not on that library's path.
set -euo pipefail
cd "$(dirname "$0")/.."

declare -A uses
while IFS=: read -r layer used; do
    uses[$layer]=$used
done < <(grep -E '^[a-z]+:' src/layers.txt)

# The layers a layer may include: itself, those it names, and theirs.
allowed() {
    local pending=("$1") seen=" " layer used
    while [ ${#pending[@]} -gt 0 ]; do
        layer=${pending[0]}
        pending=("${pending[@]:1}")
        [[ $seen == *" $layer "* ]] && continue
        seen+="$layer "
        for used in ${uses[$layer]}; do pending+=("$used"); done
    done
    echo "$seen"
}

status=0
for folder in src/*/; do
    layer=$(basename "$folder")
    if [ -z "${uses[$layer]+set}" ]; then
        echo "src/$layer/ is not a layer of src/layers.txt" >&2
        status=1
        continue
    fi
    may=$(allowed "$layer")
    while IFS=: read -r file line text; do
        included=$(sed -E 's/^#include "([a-z_]+)\/.*/\1/' <<<"$text")
        if [[ $may != *" $included "* ]]; then
            echo "$file:$line: $layer may not include $included (it may include:$may)" >&2
            status=1
        fi
    done < <(grep -rnE '^#include "[a-z_]+/' --include='*.hpp' --include='*.cpp' "$folder" || true)
done
exit $status
