#!/usr/bin/env bash
# documents.sh on a tree in order, and on one with each kind of slip.
# Usage: documents_test.sh
here=$(cd "$(dirname "${BASH_SOURCE[0]}")" && pwd)
. "$here/planted.sh"
check=(bash "$here/documents.sh" "$tree")
list=tests/build/documents_except.txt
# repeated TEXT COUNT
repeated() { printf "%${2}s" '' | sed "s/ /$1/g"; }

fill() {
    fresh
    plant README.md '# The title' '' 'See [the guide](docs/guide.md), [names](docs/guide.md#names-of-clk_a--more) and [docs](docs/).' \
        'The code is in `docs/guide.md`, `model` and `elsewhere/none.h`; `[x](no.md)` is no link.' '[ref]: docs/guide.md "A title"' \
        '[site](https://host.example/none#here) <https://host.example>' '```' '[a](none.md) `docs/none.md`' "$(repeated x 130)" '```' \
        "| $(repeated x 130) |" "$(repeated … 120)" "[$(repeated x 90)](docs/guide.md#a-b-c)" '[up](#the-title)'
    plant docs/guide.md '# Guide' '## Names of `clk_a` & more' '### [A](../README.md), B: *C*' '[up](../README.md#the-title)' \
        '## Twice' '## Twice' '[2](#twice-1) ![picture](./../model/Poles.cpp)'
    plant model/Poles.cpp "// $(repeated x 107)" 'auto a = R"(' "$(repeated x 130)" ')";' "auto b = R\"x($(repeated y 120))x\";"
    plant build/dev/Made.md '[a](none.md)'
}

fill
verify "in order" "${check[@]}"

fill
plant docs/a.md '[a](guide.md) [b](none.md) [c](../docs/none/)' '[d](guide.md#names) and [e](#nothing)' '[f]: none.md' \
    '[g](../../outside.md)' '[h](../docs/guide.md#twice-2)'
expect "docs/a.md:1: the link to none.md leads to no file, expected one of the project" \
    "docs/a.md:1: the link to ../docs/none/ leads to no file, expected one of the project" \
    "docs/a.md:2: the link to guide.md#names leads to no heading, expected one of docs/guide.md" \
    "docs/a.md:2: the link to #nothing leads to no heading, expected one of docs/a.md" \
    "docs/a.md:3: the link to none.md leads to no file, expected one of the project" \
    "docs/a.md:4: the link to ../../outside.md leads to no file, expected one of the project" \
    "docs/a.md:5: the link to ../docs/guide.md#twice-2 leads to no heading, expected one of docs/guide.md"
verify "links" "${check[@]}"

fill
plant docs/b.md 'In `model/Gone.h`, and `docs/guide.md`, and `docs/old/`.'
expect 'docs/b.md:1: `model/Gone.h` does not exist, expected a path from the root' \
    'docs/b.md:1: `docs/old/` does not exist, expected a path from the root'
verify "paths" "${check[@]}"

fill
plant docs/c.md "$(repeated y 121)" "[$(repeated z 119)](a)" '```' 'open'
expect 'docs/c.md:1: 121 columns, expected at most 120' 'docs/c.md:2: 121 columns, expected at most 120' \
    'docs/c.md:2: the link to a leads to no file, expected one of the project' \
    'docs/c.md:4: a code block is open, expected its end'
plant model/Long.h '' "// $(repeated x 108)"
plant tests/Long.cpp "$(repeated x 111)" "R\"(" ")\" $(repeated x 111)" "$(repeated x 112)"
expect 'model/Long.h:2: 111 columns, expected at most 110' 'tests/Long.cpp:1: 111 columns, expected at most 110' \
    'tests/Long.cpp:4: 112 columns, expected at most 110'
verify "lengths" "${check[@]}"

fill
plant docs/b.md 'In `model/Gone.h` once.' "$(repeated y 121)"
plant model/Long.h "$(repeated x 111)"
plant $list '# allowed' 'docs/b.md: model/Gone.h' "docs/b.md: $(repeated y 121)" "model/Long.h: $(repeated x 111)" 'model/Long.h: short'
expect "$list:5: not needed, expected no such line"
verify "exceptions" "${check[@]}"

[ $failures -eq 0 ] || exit 1
