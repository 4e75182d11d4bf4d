#!/usr/bin/env bash
# Compares the order of virtual operations, and the class that implements each, with the tables below.
# Binaries that are built separately call each other through these positions: a row that moves breaks them
# without any message.
# Usage: slots.sh SOURCE_ROOT COMPILER [-I...]
set -euo pipefail
root=$1 compiler=$2
shift 2
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

"$compiler" -std=c++20 -fPIC -I"$root" -I"$root/host" "$@" -fdump-lang-class="$work/classes" \
    -c "$root/tests/abi/slots.cpp" -o "$work/slots.o"

# slots CLASS: prints "owner::operation" lines in table order. An entry of a dump is
#   16    (int (*)(...))Vorlen::Tool::~Tool
# The offset and the typeinfo come before the operations. For an abstract class the dump names neither the
# destructors nor the pure operations: here they are "abstract", and the classes derived from it show their
# order.
slots() {
    awk -v title="Vtable for $1" '
        $0 == title { inside = 1; next }
        inside && /^$/ { exit }
        inside && /^[0-9]+ / {
            if (++entry <= 2) next
            sub(/^[0-9]+ +/, "")
            sub(/^\(int \(\*\)\(\.\.\.\)\)/, "")
            print ($0 == "__cxa_pure_virtual" || $0 == "0") ? "abstract" : $0
        }' "$work/classes"
}

failures=0
# expect CLASS: standard input is the table, one row per slot.
expect() {
    local expected actual
    expected=$(cat)
    actual=$(slots "$1")
    if [ "$actual" = "$expected" ]; then
        printf 'ok:   %s\n' "$1"
    else
        printf 'FAIL: %s (expected | found)\n' "$1"
        diff --side-by-side --width=100 <(printf '%s\n' "$expected") <(printf '%s\n' "$actual") || true
        failures=$((failures + 1))
    fi
}

expect Ruvex::Stuff <<'TABLE'
abstract
abstract
abstract
Ruvex::Stuff::_getSlot
Ruvex::Stuff::_getRecord
Ruvex::Stuff::_hasRecord
TABLE

expect Vorlen::Timing <<'TABLE'
Vorlen::Timing::~Timing
Vorlen::Timing::~Timing
Vorlen::Timing::_getLabel
Vorlen::Timing::_getSlot
Vorlen::Timing::_getRecord
Vorlen::Timing::_hasRecord
TABLE

expect Pelko::Object <<'TABLE'
Pelko::Object::~Object
Pelko::Object::~Object
Pelko::Object::_getLabel
Pelko::Object::_getSlot
Pelko::Object::_getRecord
Pelko::Object::_hasRecord
Pelko::Object::getClass
Pelko::Object::getAlias
Pelko::Object::getReprLabel
Pelko::Object::isDestroyable
Pelko::Object::printDetails
Pelko::Object::check
Pelko::Object::preDestroy
Pelko::Object::isTouchable
TABLE

expect Vorlen::Sweep <<'TABLE'
Vorlen::Sweep::~Sweep
Vorlen::Sweep::~Sweep
Vorlen::Sweep::_getLabel
Pelko::Object::_getSlot
Vorlen::Sweep::_getRecord
Pelko::Object::_hasRecord
Pelko::Object::getClass
Vorlen::Sweep::getAlias
Pelko::Object::getReprLabel
Pelko::Object::isDestroyable
Pelko::Object::printDetails
Pelko::Object::check
Vorlen::Sweep::preDestroy
Pelko::Object::isTouchable
TABLE

expect Pelko::Tool <<'TABLE'
abstract
abstract
Pelko::Tool::_getLabel
Pelko::Tool::_getSlot
Pelko::Tool::_getRecord
Pelko::Tool::_hasRecord
Pelko::Tool::getAlias
abstract
Pelko::Tool::preDestroy
TABLE

expect Vorlen::Tool <<'TABLE'
Vorlen::Tool::~Tool
Vorlen::Tool::~Tool
Vorlen::Tool::_getLabel
Pelko::Tool::_getSlot
Vorlen::Tool::_getRecord
Pelko::Tool::_hasRecord
Vorlen::Tool::getAlias
Vorlen::Tool::launch
Vorlen::Tool::preDestroy
TABLE

[ "$failures" -eq 0 ]
