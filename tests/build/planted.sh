# For the tests of the checks, to be sourced: a tree of files in a temporary folder with violations planted in it.
# A test states by `plant` what is in a file, by `expect` which lines the check is to print, and then calls `verify`.
set -euo pipefail
export LC_ALL=C
folder=$(mktemp -d)
trap 'rm -rf "$folder"' EXIT
tree=$folder/tree
mkdir "$tree"
failures=0
wanted=

# plant FILE [LINE...]: writes the file, or empties it.
plant() {
    local file=$tree/$1
    mkdir -p "$(dirname "$file")"
    shift
    if [ $# -gt 0 ]; then printf '%s\n' "$@" > "$file"; else : > "$file"; fi
}

# An empty tree.
fresh() { rm -rf "$tree"; mkdir "$tree"; }

# expect LINE...: the check is to print these lines before its summary, in any order.
expect() { wanted+=$(printf '%s\n' "$@")$'\n'; }

# verify NAME COMMAND...: runs the check. It succeeds exactly if no line is expected. Its last line, the summary, is not
# compared.
verify() {
    local name=$1 status=0 found expected expected_status=0
    shift
    found=$("$@" 2>&1) || status=$?
    found=$(printf '%s\n' "$found" | sed '$d' | sort)
    expected=$(printf '%s' "$wanted" | sort)
    [ -z "$expected" ] || expected_status=1
    if [ "$found" != "$expected" ] || [ $status -ne $expected_status ]; then
        printf 'FAIL: %s: status %s, expected %s\n' "$name" $status $expected_status
        diff <(printf '%s\n' "$expected") <(printf '%s\n' "$found") | sed -n 's/^</expected:/p; s/^>/found:   /p' || true
        failures=$((failures + 1))
    fi
    wanted=
}

# same NAME EXPECTED FOUND
same() {
    [ "$2" = "$3" ] && return
    printf 'FAIL: %s\nexpected:\n%s\nfound:\n%s\n' "$1" "$2" "$3"
    failures=$((failures + 1))
}
