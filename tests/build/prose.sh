#!/usr/bin/env bash
# Counts turns of phrase that a reader who did not grow up with English stumbles over, in the documents (*.md and the
# manual page) and in the comments of the sources. Some have an ordinary meaning too, so none of them is an error: their
# number per 1,000 words must not exceed the bound in tests/build/prose_bound.txt, and a bound that is higher than needed
# is to be lowered.
# Usage: prose.sh SOURCE_ROOT
#        prose.sh --list [ROW] SOURCE_ROOT      prints each place instead, or those of one row
set -euo pipefail
export LC_ALL=C

# A row: its name, what to write instead, and an extended regular expression. It is matched against a paragraph in lower
# case on one line, with each word and each mark of punctuation between single blanks: " where it is set , the ".
rows() {
    grep -v '^$' <<'ROWS'
where     | if, when                 | where (it|its|they|their|there|that|this|these|those|one|none|no|nothing|neither|both|each|every|any|only|some|all|a|an|the)
want      | if there is no           | for want of
gives     | returns, reports, prints | (gives|gave|says|said|tells|told)
stands    | is                       | (stands|stand|lies|lie)
comes     | is                       | (comes|come) to
ends      | is destroyed             | (ends|end) (it|them|this|that|these|those|any|both|all|when|where|if|with (it|them|him|its|their)|a (model|view|process|run|walk))
goes      | is destroyed, is deleted | (goes|go) (away|where|when|if|with (it|them)|[.,;:)])
taken     | removed, deleted         | (take|takes|taking|took|taken) (it |them |that |these )?(away|out|off)
but       | only, except             | ((nothing|none|anything|everything|all|any) but|but for)
beside    | next to, in addition     | beside
alone     | only, exactly one        | (alone|by (itself|themselves))
per       | per pole, for each pole  | (bytes?|ns|us|ms|visits?|steps?|folds?|lookups?|allocations?|merges?|virtual calls?) an? [a-z]+
ROWS
}
# What of these is ordinary English, and is not counted.
ordinary=' (stands?|standing) for | (end|ends) that | leaves? ([^ ]+ )?([^ ]+ )?([^ ]+ )?alone '

mode=check
only=
if [ "$1" = --list ]; then
    mode=list
    shift
    if [ $# -gt 1 ]; then only=$1; shift; fi
fi
here=$(cd "$(dirname "${BASH_SOURCE[0]}")" && pwd)
cd "$1"
bounds=tests/build/prose_bound.txt

{
    rows | sed 's/^/row /'
    [ ! -f $bounds ] || awk '$1 == "documents" || $1 == "comments" { print "bound", $1, $2, FNR }' $bounds
    find . -mindepth 1 \( -path './build*' -o -path ./.git \) -prune -o -type f \( -name '*.md' -o -name '*.[1-8]' \) -print |
        sed 's|^\./|document |' | sort
    "$here/../../cmake/sources.sh" . | sed 's/^/source /'
} | awk -v mode=$mode -v only="$only" -v bounds=$bounds -v ordinary="$ordinary" "$(cat "$here/text.awk")"'
    function trim(text) { sub(/^ +/, "", text); sub(/ +$/, "", text); return text }

    # Adds a line of prose to the paragraph.
    function add(text, line,    i, count, words) {
        gsub(/`[^`]*`/, " code ", text)
        gsub(/\]\([^)]*\)/, " ", text)
        gsub(/https?:[^ ]*/, " ", text)
        text = tolower(text)
        gsub(/[][*_"<>{}]/, " ", text)
        gsub(/[.,;:!?()|]/, " & ", text)
        count = split(text, words, " ")
        for (i = 1; i <= count; ++i) {
            paragraph = paragraph words[i] " "
            place[++places] = line
            if (words[i] ~ /[a-z]/) ++total[scope]
        }
    }
    # Counts the rows in the paragraph, and begins the next one.
    function finish(    i) {
        if (places)
            for (i = 1; i <= row_count; ++i) count_row(i, " " paragraph)
        paragraph = ""
        places = 0
    }
    function count_row(i, text,    before, shift) {
        shift = 0
        while (match(text, pattern[i])) {
            start = RSTART; long = RLENGTH
            before = substr(text, 1, start)
            shift += gsub(/ /, "", before)
            if (!is_ordinary(text, start, long)) {
                ++hits[scope, i]
                ++sum[scope]
                if (mode == "list" && (only == "" || only == name[i]))
                    print file ":" place[shift] ":" substr(text, start, long) "(" name[i] "), expected: " instead[i]
            }
            # The blank behind the match may begin the next one.
            before = substr(text, start + 1, long - 2)
            shift += gsub(/ /, "", before)
            text = substr(text, start + long - 1)
        }
    }
    # Whether what lies around a match is one of the ordinary uses.
    function is_ordinary(text, start, long,    around, from) {
        from = start > 40 ? start - 40 : 1
        around = substr(text, from, start - from + long + 12)
        while (match(around, ordinary)) {
            if (from + RSTART - 1 < start + long - 1 && from + RSTART + RLENGTH - 2 > start) return 1
            from += RSTART + RLENGTH - 2
            around = substr(around, RSTART + RLENGTH - 1)
        }
        return 0
    }

    function read_markdown(    line, text, fenced) {
        while ((getline text < file) > 0) {
            ++line
            if (text ~ /^ *(```|~~~)/) { fenced = !fenced; finish(); continue }
            if (fenced) continue
            if (text ~ /^[ \t]*$/ || text ~ /^ *(\||#|[-*+] |[0-9]+\. )/) finish()
            add(text, line)
        }
    }
    function read_manual(    line, text, example) {
        while ((getline text < file) > 0) {
            ++line
            if (text ~ /^\.EX/) example = 1
            if (text ~ /^\.EE/) example = 0
            if (example || text ~ /^\.\\"/) continue
            if (text ~ /^\.(SH|SS|TP|PP|TH|IP|RS|RE)/) finish()
            sub(/^\.[A-Z]+ ?/, "", text)
            gsub(/\\f[A-Z]/, "", text)
            gsub(/\\/, "", text)
            add(text, line)
        }
    }
    # Comments of a line each make a paragraph as long as no other line comes between.
    function read_source(    line, text) {
        while ((getline text < file) > 0) {
            ++line
            if (touches_raw(text, line == 1)) { finish(); continue }
            if (text !~ /^[ \t]*\/\//) finish()
            if (!match(text, /(^|[ \t])\/\/+( |$)/)) continue
            text = substr(text, RSTART + RLENGTH)
            if (text ~ /^[ \t]*$/ || text ~ /^---/) finish()
            add(text, line)
        }
    }

    $1 == "row" {
        sub(/^row /, "")
        i = ++row_count
        first = index($0, "|")
        name[i] = trim(substr($0, 1, first - 1))
        rest = substr($0, first + 1)
        instead[i] = trim(substr(rest, 1, index(rest, "|") - 1))
        pattern[i] = " " trim(substr(rest, index(rest, "|") + 1)) " "
        next
    }
    $1 == "bound" { bound[$2] = $3; bound_line[$2] = $4; next }
    {
        file = substr($0, length($1) + 2)
        scope = $1 == "document" ? "documents" : "comments"
        if ($1 == "source") read_source()
        else if (file ~ /\.md$/) read_markdown()
        else read_manual()
        finish()
        close(file)
    }

    function rate(count, words) { return words ? int(10000 * count / words + 0.5) / 10 : 0 }
    function check(scope,    measured, place) {
        measured = rate(sum[scope], total[scope])
        place = bounds ":" bound_line[scope] + 0
        if (!(scope in bound)) {
            printf "%s: no bound of the %s, expected \"%s %.1f\"\n", place, scope, scope, measured
            ++failures
        } else if (measured > bound[scope]) {
            printf "%s: %.1f per 1,000 words of %s, expected at most %.1f (prose.sh --list prints where)\n", \
                place, measured, scope, bound[scope]
            ++failures
        } else if (measured < bound[scope] - 0.5) {
            printf "%s: %.1f per 1,000 words of %s, expected the bound %.1f to be lowered to it\n", \
                place, measured, scope, bound[scope]
            ++failures
        }
    }
    END {
        if (mode == "list") exit 0
        check("documents")
        check("comments")
        printf "%-10s %9s %9s   %s\n", "row", "documents", "comments", "write"
        for (i = 1; i <= row_count; ++i)
            printf "%-10s %9d %9d   %s\n", name[i], hits["documents", i], hits["comments", i], instead[i]
        printf "%-10s %9d %9d\n", "sum", sum["documents"], sum["comments"]
        printf "%-10s %9d %9d\n", "words", total["documents"], total["comments"]
        printf "per 1,000 words: documents %.1f, comments %.1f, all %.1f\n", \
            rate(sum["documents"], total["documents"]), rate(sum["comments"], total["comments"]), \
            rate(sum["documents"] + sum["comments"], total["documents"] + total["comments"])
        exit failures > 0
    }'
