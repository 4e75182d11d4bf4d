#!/usr/bin/env bash
# prose.sh: what each row finds, where text is looked for, and how the bounds are compared.
# Usage: prose_test.sh
here=$(cd "$(dirname "${BASH_SOURCE[0]}")" && pwd)
. "$here/planted.sh"
bounds=tests/build/prose_bound.txt

# found ROW TEXT: the phrases of a row that are found in a document of this text, one per line.
found() { fresh; plant a.md "$2"; bash "$here/prose.sh" --list "$1" "$tree" | sed -E 's/^[^:]*:[0-9]+: (.*) \(.*/\1/'; }
# counts ROW COUNT TEXT: a phrase is found that often.
counts() { same "$1: $3" "$2" "$(found "$1" "$3" | grep -c . || true)"; }

counts where 2 'Where it is set, or where no one is.'
counts where 0 'The folder where files are, somewhere else.'
counts want 1 'It ends for want of memory.'
counts gives 3 'It gives, tells and is told.'
counts gives 0 'Give an option.'
counts stands 2 'It stands alone, and lies there.'
counts stands 0 'A star stands for any text.'
counts comes 1 'It comes to nothing.'
counts ends 2 'A view ends when its set is gone; the cell ends with its pins.'
counts ends 0 'A path ends at a check. Both ends of it.'
counts goes 3 'It goes. That goes away, and this goes with it.'
counts goes 0 'Data goes from left to right.'
counts taken 2 'It is taken away, take it out.'
counts taken 0 'It is taken from there.'
counts but 3 'All but one, nothing but this, but for that.'
counts but 0 'It is small, but correct.'
counts beside 1 'The one beside it; besides, more.'
counts alone 2 'One alone, each by itself.'
counts alone 0 'It leaves the other one alone.'
counts per 2 'It costs 8 bytes an arc and a virtual call a pole.'
counts per 0 'It needs 8 bytes, and a call.'
same "rows next to each other" $'where the\nbeside' "$(found where 'where the'; found beside 'beside')"

# The places: over ends of lines, not over ends of paragraphs; not in code.
fresh
plant a.md 'A text, where' 'it is long.' '' 'This is where' '' '- it ends.' '`where it is`' '```' 'where it is' '```' '| where it |'
plant docs/a.1 '.SH NAME' 'a \- where' '\fIit\fR is' '.EX' 'where it is' '.EE' 'where it \fBis\fR'
plant a.cpp '// Found where' '// it is.' 'int where_it; // where it is' '//' '// where' '//' '// it is' 'auto a = "where it is";' \
    'auto b = R"(' '// where it is' ')";' '    // where' '    // it is'
plant build/dev/a.md 'where it is'
same "places" 'a.md:1
a.md:11
docs/a.1:2
docs/a.1:7
a.cpp:1
a.cpp:3
a.cpp:12' "$(bash "$here/prose.sh" --list "$tree" | sed -E 's/^([^:]+:[0-9]+):.*/\1/')"

# Two findings in a thousand words of documents, and one in five hundred of comments.
fill() {
    fresh
    plant a.md 'where it is beside' "$(yes word | head -n 996)"
    plant a.h "// beside$(printf ' word%.0s' {1..499})"
}
check() { bash "$here/prose.sh" "$tree" | grep -e prose_bound -e '^per 1,000'; }
measured='per 1,000 words: documents 2.0, comments 2.0, all 2.0'
fill
plant $bounds '# a comment' 'documents 2.4' 'comments 2.0'
same "within the bounds" "$measured" "$(check)"
bash "$here/prose.sh" "$tree" >/dev/null || same "status within the bounds" 0 1
plant $bounds '# a comment' 'documents 1.9' 'comments 2.6'
same "out of the bounds" "$bounds:2: 2.0 per 1,000 words of documents, expected at most 1.9 (prose.sh --list prints where)
$bounds:3: 2.0 per 1,000 words of comments, expected the bound 2.6 to be lowered to it
$measured" "$(check)"
! bash "$here/prose.sh" "$tree" >/dev/null || same "status out of the bounds" 1 0
rm "$tree/$bounds"
same "no bounds" "$bounds:0: no bound of the documents, expected \"documents 2.0\"
$bounds:0: no bound of the comments, expected \"comments 2.0\"
$measured" "$(check)"

[ $failures -eq 0 ] || exit 1
