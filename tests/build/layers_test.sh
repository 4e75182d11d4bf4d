#!/usr/bin/env bash
# layers.sh on a tree that uses each rule once, and on the same tree with one violation of each kind.
# Usage: layers_test.sh
here=$(cd "$(dirname "${BASH_SOURCE[0]}")" && pwd)
. "$here/planted.sh"
check=(bash "$here/layers.sh" "$tree")
rooms=(Vorlen base design readers model exceptions analysis report cli)

# A header in each room, and for each rule a file that needs it.
fill() {
    local number=0 from to
    fresh
    for room in "${rooms[@]}"; do plant "$room/Own.h"; done
    plant host/Pelko/Pole.h '#include "Ruvex/Console.h"' '#include <vector>'
    plant host/Ruvex/Console.h
    plant host/Pelko/detail/Pages.h
    plant report/Report.h
    plant readers/sdc/Reader.h '#include "readers/Own.h"'
    plant bench/any_bench.cpp '#include "support/Any.h"' '#include "Vorlen/Own.h"'
    plant bench/support/Any.h
    plant build/dev/Made.cpp '#include "../x.h"'
    while read -r from to; do
        number=$((number + 1))
        case $to in
            *.h) ;;
            host) to=Pelko/Pole.h ;;
            host/Pelko/detail) to=Pelko/detail/Pages.h ;;
            *) to=$to/Own.h ;;
        esac
        plant "$from/Rule$number.cpp" "#include \"$to\"" "#include \"$from/Own.h\"" "#include <string>"
    done < <(bash "$here/layers.sh" --rules)
}

fill
verify "each rule used" "${check[@]}"

# expected_of ROOM: what the message tells of it.
expected_of() {
    bash "$here/layers.sh" --rules | awk -v room="$1" '
        $1 == room { text = text (text ? ", " : "") $2 }
        END { print room "/ may include " (text ? text " and itself" : "only itself") }'
}

# Arrows that must never be allowed, neighbours in the list of rooms first.
fill
number=0
while read -r from to; do
    number=$((number + 1))
    plant "$from/Planted$number.cpp" '' "#include \"$to\""
    expect "$from/Planted$number.cpp:2: $from/ includes \"$to\", expected none: $(expected_of "$from")"
done <<'ARROWS'
base       design/Own.h
base       Ruvex/Console.h
design     readers/Own.h
design     model/Own.h
design     Pelko/Pole.h
readers    model/Own.h
readers    exceptions/Own.h
readers    Pelko/Pole.h
readers    Vorlen/Own.h
model      readers/sdc/Reader.h
model      exceptions/Own.h
model      analysis/Own.h
model      Vorlen/Own.h
exceptions readers/Own.h
exceptions analysis/Own.h
exceptions Vorlen/Own.h
analysis   report/Own.h
analysis   cli/Own.h
report     analysis/Own.h
report     design/Own.h
report     cli/Own.h
report     Pelko/Pole.h
report     Vorlen/Own.h
cli        Vorlen/Own.h
Vorlen     base/Own.h
Vorlen     model/Own.h
host       Vorlen/Own.h
host       base/Own.h
other      base/Own.h
ARROWS
verify "forbidden arrows" "${check[@]}"

fill
plant design/A.cpp '#include "../base/Own.h"' '#include "./Own.h"' '#include "design/../base/Own.h"'
expect 'design/A.cpp:1: "../base/Own.h" is relative, expected a path from the root' \
    'design/A.cpp:2: "./Own.h" is relative, expected a path from the root' \
    'design/A.cpp:3: "design/../base/Own.h" is relative, expected a path from the root'
plant readers/sdc/B.cpp '  #  include "Reader.h"' '#include "sdc/Reader.h"' '#include "readers/sdc/None.h"'
expect 'readers/sdc/B.cpp:1: "Reader.h" is relative to its folder, expected "readers/sdc/Reader.h"' \
    'readers/sdc/B.cpp:2: "sdc/Reader.h" does not exist, expected a header from the root or from host/' \
    'readers/sdc/B.cpp:3: "readers/sdc/None.h" does not exist, expected a header from the root or from host/'
plant model/C.h '#include <base/Own.h>' '#include <Pelko/Pole.h>' '#include "host/Pelko/Pole.h"' '#include HEADER'
expect 'model/C.h:1: <base/Own.h> is a header of the project, expected quotes' \
    'model/C.h:2: <Pelko/Pole.h> is a header of the project, expected quotes' \
    'model/C.h:3: "host/Pelko/Pole.h" is a header of the host, expected "Pelko/Pole.h"' \
    'model/C.h:4: include of HEADER, expected a name in quotes or angle brackets'
plant host/Pelko/D.cpp '#include "Pole.h"'
expect 'host/Pelko/D.cpp:1: "Pole.h" is relative to its folder, expected "Pelko/Pole.h"'
plant tests/model/E_test.cpp '#include "../model/C.h"' '#include <base/Own.h>'
expect 'tests/model/E_test.cpp:1: "../model/C.h" is relative, expected a path from the root' \
    'tests/model/E_test.cpp:2: <base/Own.h> is a header of the project, expected quotes'
verify "ways to write an include" "${check[@]}"

# Without the file that needs it, a rule is superfluous.
number=0
while read -r from to; do
    number=$((number + 1))
    [ "$from $to" != "design base" ] && [ "$from $to" != "analysis report/Report.h" ] && continue
    fill
    rm "$tree/$from/Rule$number.cpp"
    line=$(grep -nE "^$from +-> $to( |$)" "$here/layers.sh" | cut -d: -f1)
    expect "tests/build/layers.sh:$line: no include needs the rule $from -> $to, expected it to be deleted"
    verify "superfluous rule $from -> $to" "${check[@]}"
done < <(bash "$here/layers.sh" --rules)

[ $failures -eq 0 ] || exit 1
