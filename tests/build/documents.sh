#!/usr/bin/env bash
# Documents and sources are in order to read:
#   a link in a *.md file leads to a file or folder of the project, and after '#' to a heading of it;
#   a path in backticks that begins with a folder of the project exists (`tests/abi`, `Vorlen/Tool.h`);
#   a line of a document has at most 120 columns, except in tables and code blocks and without the targets of its links;
#   a line of a source has at most 110 columns, comments included, except in raw strings.
# tests/build/documents_except.txt lists what is allowed all the same: "file: text of the line" (# begins a comment).
# Usage: documents.sh SOURCE_ROOT
set -euo pipefail
export LC_ALL=C
here=$(cd "$(dirname "${BASH_SOURCE[0]}")" && pwd)
cd "$1"
list=tests/build/documents_except.txt

everything() { find . -mindepth 1 \( -path './build*' -o -path ./.git \) -prune -o -print | sed 's|^\./||' | sort; }

{
    everything | sed 's/^/exists /'
    [ ! -f $list ] || awk '{ print "except", FNR, $0 }' $list
    everything | grep '\.md$' | sed 's/^/document /' || true
    "$here/../../cmake/sources.sh" . | sed 's/^/source /'
} | awk -v list=$list "$(cat "$here/text.awk")"'
    function fail(line, text) { fail_at(name, line, text) }
    function fail_at(file, line, text) { print file ":" line ": " text; ++failures }

    function folder_of(path) { return path ~ /\// ? substr(path, 1, match(path, /\/[^\/]*$/) - 1) : "" }

    # A path without "." and ".."; null if it leaves the project.
    function normal(path,    parts, count, i, kept, top) {
        count = split(path, parts, "/")
        top = 0
        for (i = 1; i <= count; ++i) {
            if (parts[i] == "" || parts[i] == ".") continue
            if (parts[i] != "..") kept[++top] = parts[i]
            else if (top-- == 0) return ""
        }
        path = kept[1]
        for (i = 2; i <= top; ++i) path = path "/" kept[i]
        return top == 0 ? "." : path
    }

    # The anchor of a heading: lower case, no punctuation, hyphens for spaces; the second of a name ends in -1.
    function add_heading(text,    anchor) {
        sub(/^#+[ \t]+/, "", text)
        sub(/[ \t]+#*[ \t]*$/, "", text)
        while (match(text, /\]\([^)]*\)/))
            text = substr(text, 1, RSTART - 1) substr(text, RSTART + RLENGTH)
        text = tolower(text)
        gsub(/[^-a-z0-9_ \200-\377]/, "", text)
        gsub(/ /, "-", text)
        anchor = name "#" text
        if (headings[anchor]++) anchor = anchor "-" (headings[anchor] - 1)
        is_heading[anchor] = 1
    }
    function excepted(line, text) {
        if (!(name ": " text in except)) return 0
        needed[name ": " text] = 1
        return 1
    }

    function keep_link(line, target) {
        link_from[++links] = name
        link_line[links] = line
        link_target[links] = target
    }
    # Whether code looks like a path that begins with a folder of the project.
    function is_path(code) {
        return code ~ /^[A-Za-z.]+\/[A-Za-z0-9_.\/-]*$/ && code !~ /^build\// && substr(code, 1, index(code, "/") - 1) in exists
    }
    # Collects the links of a line, and checks the paths that it has in backticks.
    function read_text(line, text,    rest, span) {
        rest = ""
        while (match(text, /`[^`]+`/)) {
            span = substr(text, RSTART + 1, RLENGTH - 2)
            rest = rest substr(text, 1, RSTART - 1) "code"
            text = substr(text, RSTART + RLENGTH)
            if (is_path(span) && !(normal(span) in exists) && !excepted(line, span))
                fail(line, "`" span "` does not exist, expected a path from the root")
        }
        rest = rest text
        if (match(rest, /^ *\[[^]]+\]: +[^ ]+/)) {
            span = substr(rest, RSTART, RLENGTH)
            sub(/^.*: +/, "", span)
            keep_link(line, span)
        }
        while (match(rest, /\]\([^) ]+( +"[^"]*")?\)/)) {
            span = substr(rest, RSTART + 2, RLENGTH - 3)
            sub(/ .*/, "", span)
            rest = substr(rest, RSTART + RLENGTH)
            keep_link(line, span)
        }
    }
    # The text of a line without the targets of its links.
    function shown(text) { gsub(/\]\([^) ]*\)/, "]", text); gsub(/https?:[^ >)]*/, "", text); return text }

    function read_document(    line, text, fenced) {
        while ((getline text < name) > 0) {
            ++line
            if (text ~ /^ *(```|~~~)/) { fenced = !fenced; continue }
            if (fenced) continue
            if (text ~ /^#+[ \t]/) add_heading(text)
            read_text(line, text)
            if (text !~ /^ *\|/ && columns(shown(text)) > 120 && !excepted(line, text))
                fail(line, columns(shown(text)) " columns, expected at most 120")
        }
        close(name)
        if (fenced) fail(line, "a code block is open, expected its end")
    }
    function read_source(    line, text) {
        while ((getline text < name) > 0) {
            ++line
            if (!touches_raw(text, line == 1) && columns(text) > 110 && !excepted(line, text))
                fail(line, columns(text) " columns, expected at most 110")
        }
        close(name)
    }
    function check_link(i,    target, anchor, file) {
        name = link_from[i]
        target = link_target[i]
        if (target ~ /^[a-z]+:/) return
        anchor = ""
        if (index(target, "#")) {
            anchor = substr(target, index(target, "#") + 1)
            target = substr(target, 1, index(target, "#") - 1)
        }
        file = target == "" ? name : normal((target ~ /^\// ? "" : folder_of(name) "/") target)
        if (file != "." && !(file in exists))
            fail(link_line[i], "the link to " link_target[i] " leads to no file, expected one of the project")
        else if (anchor != "" && !(file "#" anchor in is_heading))
            fail(link_line[i], "the link to " link_target[i] " leads to no heading, expected one of " file)
    }

    $1 == "exists" { exists[substr($0, 8)] = 1; next }
    $1 == "except" {
        at = $2
        sub(/^except [0-9]+ ?/, "")
        if ($0 !~ /^#/ && $0 != "") except[$0] = at
        next
    }
    { name = substr($0, length($1) + 2) }
    $1 == "document" { ++documents; read_document() }
    $1 == "source" { ++sources; read_source() }
    END {
        for (i = 1; i <= links; ++i) check_link(i)
        for (line in except)
            if (!(line in needed)) fail_at(list, except[line], "not needed, expected no such line")
        printf "%d documents, %d links and %d sources checked, %d failures\n", documents, links, sources, failures
        exit documents + sources == 0 || failures > 0
    }'
