#!/usr/bin/env bash
# format.sh on files in order and out of order, without clang-format, and with another version of it.
# Usage: format_test.sh
here=$(cd "$(dirname "${BASH_SOURCE[0]}")" && pwd)
. "$here/planted.sh"
check=(bash "$here/format.sh" "$tree")

# fake VERSION: a clang-format that only knows its version.
fake() {
    mkdir -p "$folder/bin"
    printf '#!/bin/sh\necho "%s"\n' "$1" > "$folder/bin/clang-format"
    chmod +x "$folder/bin/clang-format"
}

cp "$here/../../.clang-format" "$tree"
plant design/Good.cpp 'int two() { return 2; }'
same "without the tool" "skipped: no clang-format" "$(PATH=$folder/none "$BASH" "$here/format.sh" "$tree")"
fake "clang-format version 16.0.6"
same "another version" "skipped: clang-format 14 is needed, found: clang-format version 16.0.6" \
    "$(PATH=$folder/bin:$PATH "${check[@]}")"

if command -v clang-format >/dev/null && [[ $(clang-format --version) == *"version 14."* ]]; then
    verify "in order" "${check[@]}"

    message='not as clang-format leaves it, expected the output of `make format`'
    plant model/Bad.cpp '' 'int two()  { return 2; }' 'int  three() { return 3; }'
    plant tests/Bad.h '// A comment.' 'int  four;'
    plant build/dev/Made.cpp 'int   five;'
    expect "model/Bad.cpp:2: $message" "tests/Bad.h:2: $message"
    verify "out of order" "${check[@]}"
else
    echo "skipped: no clang-format 14"
fi

[ $failures -eq 0 ] || exit 1
