#!/usr/bin/env bash
# Misuses of the public headers that the compiler rejects. Each row has the first diagnostic and the right use
# of the same thing. All misuses are compiled in one call, each in its own function; so are all right uses,
# which must compile: this shows that the compiler rejects the misuse, not the rest of the row.
# Usage: refused.sh SOURCE_ROOT COMPILER [-I...]
set -euo pipefail
root=$1 compiler=$2
shift 2
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
export LC_ALL=C # plain quotes in diagnostics

whats=() expected=()

# refuse WHAT MISUSE RIGHT_USE DIAGNOSTIC: the snippets are statements that can use the members of `Given`.
refuse() {
    local row=${#whats[@]}
    whats+=("$1")
    expected+=("$4")
    local open="void row$row(Given& given) {"
    open+=' auto& [tool, sweep, pole, edge, subdomain, cpath, delay, mask, timing, map] = given;'
    printf '%s\n#line 1 "row %d"\n%s\n}\n' "$open" "$row" "$2" >>"$work/misuse.cpp"
    printf '%s\n#line 1 "right use of: %s"\n%s\n}\n' "$open" "$1" "$3" >>"$work/right.cpp"
}

cat >"$work/given.h" <<'HEADER'
#include "Pelko/Model.h"
#include "Vorlen/Sweep.h"
#include "Vorlen/Tool.h"

#include <set>

using namespace Pelko;
using Vorlen::PoleSet;
using Vorlen::StemPoleSetMap;
using Vorlen::Sweep;
using Vorlen::Timing;
using Vorlen::TimingMap;

struct Given {
    Vorlen::Tool* tool;
    Sweep* sweep;
    Pole* pole;
    Edge* edge;
    Subdomain* subdomain;
    CPath* cpath;
    Delay delay;
    PseudoMask mask;
    Timing timing;
    TimingMap map;
};
HEADER
printf '#include "given.h"\n' | tee "$work/misuse.cpp" >"$work/right.cpp"

# --- The driver: Vorlen/Tool.h, Pelko/Tool.h

refuse 'a copy of the tool' 'Vorlen::Tool copy(*tool);' 'Vorlen::Tool& same = *tool;' \
    "use of deleted function 'Vorlen::Tool::Tool(const Vorlen::Tool&)'"
refuse 'a tool assigned' '*tool = *tool;' 'tool = tool;' \
    "use of deleted function 'Vorlen::Tool& Vorlen::Tool::operator=(const Vorlen::Tool&)'"
refuse 'a tool made directly' 'new Vorlen::Tool;' 'Vorlen::Tool::create();' \
    "'Vorlen::Tool::Tool()' is protected within this context"
refuse 'a tool deleted' 'delete tool;' 'tool->destroy();' \
    "'virtual Vorlen::Tool::~Tool()' is protected within this context"
refuse 'a step of the creation of a tool' 'Vorlen::Tool::preCreate();' 'Vorlen::Tool::create();' \
    "'static void Vorlen::Tool::preCreate()' is protected within this context"
refuse 'a step of the end of a tool' 'tool->preDestroy();' 'tool->destroy();' \
    "'virtual void Vorlen::Tool::preDestroy()' is protected within this context"
refuse 'the loop stack itself' 'tool->loopStack_.clear();' 'tool->reset();' \
    "'Vorlen::PoleList Vorlen::Tool::loopStack_' is private within this context"
refuse 'a launch of a const tool' 'const Vorlen::Tool& fixed = *tool; fixed.launch();' \
    'const Vorlen::Tool& fixed = *tool; fixed.isExhaustive();' \
    "passing 'const Vorlen::Tool' as 'this' argument discards qualifiers [-fpermissive]"
refuse 'a phase of any tool' 'Pelko::Tool::getTool("Analyzing")->prolog();' \
    'Pelko::Tool::getTool("Analyzing")->launch();' "'class Pelko::Tool' has no member named 'prolog'"
refuse 'a tool of no kind' 'Pelko::Tool nameless("a");' 'Pelko::Tool::getTool("a");' \
    "'Pelko::Tool::Tool(const std::string&)' is protected within this context"
refuse 'stems ordered by address' 'std::map<Pole*, std::set<Pole*>> stems; tool->clockStem(stems);' \
    'StemPoleSetMap stems; tool->clockStem(stems);' \
    "no matching function for call to 'Vorlen::Tool::clockStem(std::map<Pelko::Pole*, std::set<Pelko::Pole*> >&)'"
refuse 'domains without stems' 'tool->createDomains(pole, pole);' \
    'StemPoleSetMap stems; tool->createDomains(stems, pole, pole);' \
    "no matching function for call to 'Vorlen::Tool::createDomains(Pelko::Pole*&, Pelko::Pole*&)'"
refuse 'a relation into constants' \
    'tool->calculateRelationship(Delay(0), Delay(0), delay, delay, delay, delay);' \
    'Delay setup(0), hold(0); tool->calculateRelationship(setup, hold, delay, delay, delay, delay);' \
    "cannot bind non-const lvalue reference of type 'Pelko::Delay&' to an rvalue of type 'Pelko::Delay'"

# --- The analysis of a subdomain: Vorlen/Sweep.h

refuse 'a copy of a sweep' 'Sweep copy(*sweep);' 'Sweep& same = *sweep;' \
    "use of deleted function 'Vorlen::Sweep::Sweep(const Vorlen::Sweep&)'"
refuse 'a sweep assigned' '*sweep = *sweep;' 'sweep = sweep;' \
    "use of deleted function 'Vorlen::Sweep& Vorlen::Sweep::operator=(const Vorlen::Sweep&)'"
refuse 'a sweep made directly' 'new Sweep(subdomain);' 'Sweep::create(subdomain);' \
    "'Vorlen::Sweep::Sweep(Pelko::Subdomain*)' is protected within this context"
refuse 'a sweep deleted' 'delete sweep;' 'sweep->destroy();' \
    "'virtual Vorlen::Sweep::~Sweep()' is protected within this context"
refuse 'a sweep of nothing' 'Sweep::create();' 'Sweep::create(subdomain);' \
    "no matching function for call to 'Vorlen::Sweep::create()'"
refuse 'a sweep of a whole domain' 'Sweep::create(subdomain->getDomain());' 'Sweep::create(subdomain);' \
    "cannot convert 'Pelko::Domain*' to 'Pelko::Subdomain*'"
refuse 'half a phase' 'sweep->propagateArrivals();' 'sweep->arrivalAnalyze();' \
    "'bool Vorlen::Sweep::propagateArrivals()' is private within this context"
refuse 'a map of the sweep' 'sweep->launchATMapMap.clear();' 'sweep->hasLaunchTimingMap(pole, map);' \
    "'Vorlen::PoleTimingMap Vorlen::Sweep::launchATMapMap' is private within this context"
refuse 'the subdomain changed' 'sweep->getSubdomain() = subdomain;' 'subdomain = sweep->getSubdomain();' \
    'lvalue required as left operand of assignment'
refuse 'a phase of a const sweep' 'const Sweep& fixed = *sweep; fixed.analyze();' \
    'const Sweep& fixed = *sweep; fixed.hasArrivalTimingMap(pole);' \
    "passing 'const Vorlen::Sweep' as 'this' argument discards qualifiers [-fpermissive]"
refuse 'an integer for a slack' 'sweep->searchLongestPaths(100, 1);' 'sweep->searchLongestPaths(Delay(100), 1);' \
    "no matching function for call to 'Vorlen::Sweep::searchLongestPaths(int, int)'"
refuse 'an integer for classes' 'sweep->calculateLSlack(edge, 3, delay);' \
    'sweep->calculateLSlack(edge, PseudoMask(3), delay);' \
    "no matching function for call to 'Vorlen::Sweep::calculateLSlack(Pelko::Edge*&, int, Pelko::Delay&)'"
refuse 'an integer for an arrival' 'sweep->calculateSSlack(edge, mask, 5);' \
    'sweep->calculateSSlack(edge, mask, Delay(5));' \
    "no matching function for call to 'Vorlen::Sweep::calculateSSlack(Pelko::Edge*&, Pelko::PseudoMask&, int)'"

# --- Times: Vorlen/Timing.h, Pelko/Delay.h

refuse 'a timing of integers' 'Timing both(1, 2);' 'Timing both(Delay(1), Delay(2));' \
    "no matching function for call to 'Vorlen::Timing::Timing(int, int)'"
refuse 'a bound that is an integer' 'timing.setMaximumDelay(5);' 'timing.setMaximumDelay(Delay(5));' \
    "cannot convert 'int' to 'const Pelko::Delay&'"
refuse 'a bound changed in place' 'timing.getMinimumDelay() += delay;' \
    'timing.setMinimumDelay(timing.getMinimumDelay() + delay);' \
    "passing 'const Pelko::Delay' as 'this' argument discards qualifiers [-fpermissive]"
refuse 'a delay for a timing' 'timing += delay;' 'timing += Timing(delay, delay);' \
    "no match for 'operator+=' (operand types are 'Vorlen::Timing' and 'Pelko::Delay')"
refuse 'a delay of nothing' 'Delay none;' 'Delay none = Delay::getUndefined();' \
    "no matching function for call to 'Pelko::Delay::Delay()'"
refuse 'a delay of an integer, unsaid' 'Delay five = 5;' 'Delay five(5);' \
    "conversion from 'int' to non-scalar type 'Pelko::Delay' requested"
refuse 'an integer assigned to a delay' 'delay = 5;' 'delay = Delay(5);' \
    "no match for 'operator=' (operand types are 'Pelko::Delay' and 'int')"
refuse 'an integer added' 'delay + 1;' 'delay + Delay(1);' \
    "no match for 'operator+' (operand types are 'Pelko::Delay' and 'int')"
refuse 'a delay multiplied' 'delay * 2;' 'Delay::saturate(std::int64_t{int(delay)} * 2);' \
    "no match for 'operator*' (operand types are 'Pelko::Delay' and 'int')"
refuse 'a delay compared with an integer' 'delay == 0;' 'delay == Delay(0);' \
    "no match for 'operator==' (operand types are 'Pelko::Delay' and 'int')"
refuse 'the raw value, unsaid' 'int raw = delay;' 'int raw = int(delay);' \
    "cannot convert 'Pelko::Delay' to 'int' in initialization"
refuse 'a delay as a condition' 'if (delay) {}' 'if (delay.isDefined()) {}' \
    "invalid user-defined conversion from 'Pelko::Delay' to 'bool' [-fpermissive]"

# --- Classes: Pelko/PseudoMask.h

refuse 'a mask of an integer, unsaid' 'PseudoMask three = 3;' 'PseudoMask three(3);' \
    "conversion from 'int' to non-scalar type 'Pelko::PseudoMask' requested"
refuse 'an integer joined to a mask' 'mask |= 1;' 'mask |= PseudoMask(1);' \
    "no match for 'operator|=' (operand types are 'Pelko::PseudoMask' and 'int')"
refuse 'a mask compared with an integer' 'mask == 1UL;' 'mask.getBits() == 1UL;' \
    "no match for 'operator==' (operand types are 'Pelko::PseudoMask' and 'long unsigned int')"
refuse 'the bits, unsaid' 'unsigned long bits = mask;' 'unsigned long bits = mask.getBits();' \
    "cannot convert 'Pelko::PseudoMask' to 'long unsigned int' in initialization"
refuse 'a mask and a delay' 'mask & delay;' 'mask & mask;' \
    "no match for 'operator&' (operand types are 'Pelko::PseudoMask' and 'Pelko::Delay')"
refuse 'an exception of class 1, by number' 'cpath->setPseudoMask(1);' 'cpath->setPseudoMask(PseudoMask::getBasic(1));' \
    "cannot convert 'int' to 'const Pelko::PseudoMask&'"

# --- The database: Pelko/Pole.h, Edge.h, Subdomain.h, Path.h, Analyzer.h, Model.h

refuse 'a pole made directly' 'new Pole(cell, nullptr);' 'Pole::create(cell);' \
    "'Pelko::Pole::Pole(Pelko::Cell*, Pelko::Pin*)' is protected within this context"
refuse 'a copy of a pole' 'Pole copy(*pole);' 'Pole& same = *pole;' \
    "use of deleted function 'Pelko::Pole::Pole(const Pelko::Pole&)'"
refuse 'a mark on a const pole' 'const Pole* fixed = pole; fixed->mark();' 'pole->mark();' \
    "passing 'const Pelko::Pole' as 'this' argument discards qualifiers [-fpermissive]"
refuse 'a pole ordered by address' 'PoleSet poles = std::set<Pole*>{pole};' 'PoleSet poles{pole};' \
    "conversion from 'set<[...],std::less<Pelko::Pole*>>' to non-scalar type 'set<[...],Pelko::Object::StampLess>' requested"
refuse 'an arc written through a view' '*pole->getIncomingEdges().begin() = edge;' \
    '(*pole->getIncomingEdges().begin())->disactivate();' 'lvalue required as left operand of assignment'
refuse 'an arc made directly' 'new Edge(pole, pole, delay, delay);' 'Edge::create(pole, pole, delay, delay);' \
    "'Pelko::Edge::Edge(Pelko::Pole*, Pelko::Pole*, const Pelko::Delay&, const Pelko::Delay&)' is protected within this context"
refuse 'an arc of integers' 'Edge::create(pole, pole, 1, 2);' 'Edge::create(pole, pole, Delay(1), Delay(2));' \
    "cannot convert 'int' to 'const Pelko::Delay&'"
refuse 'an arc moved' 'edge->getSource() = pole;' 'pole = edge->getSource();' \
    'lvalue required as left operand of assignment'
refuse 'a const arc cut' 'const Edge* fixed = edge; fixed->disactivate();' 'edge->disactivate();' \
    "passing 'const Pelko::Edge' as 'this' argument discards qualifiers [-fpermissive]"
refuse 'an arc sensitised by number' 'edge->sensitize(1);' 'edge->sensitize(PseudoMask(1));' \
    "cannot convert 'int' to 'const Pelko::PseudoMask&'"
refuse 'clock edges by number' 'Subdomain::create(subdomain->getDomain(), 2, 1);' \
    'Subdomain::create(subdomain->getDomain(), ClockMode::Rising, ClockMode::Falling);' \
    "invalid user-defined conversion from 'int' to 'const Pelko::ClockMode&' [-fpermissive]"
refuse 'a kept path taken out' 'subdomain->longestPaths_.clear();' 'subdomain->clearResults();' \
    "'std::set<Pelko::Path*, Pelko::Path::Worse> Pelko::Subdomain::longestPaths_' is private within this context"
refuse 'a clock of integers' 'analyzer->setClock(pole, 100, 0, 50, 50);' \
    'analyzer->setClock(pole, Delay(100), Delay(0), Delay(50), Delay(50));' \
    "cannot convert 'int' to 'const Pelko::Delay&'"
refuse 'an input constraint that is a delay' 'analyzer->setInputConstraint(pole, delay);' \
    'analyzer->setInputConstraint(pole, IOConstraint(pole, ClockMode::Rising, delay, delay));' \
    "cannot convert 'Pelko::Delay' to 'const Pelko::IOConstraint&'"
refuse 'a copy of the model' 'Model first("top"); Model copy(first);' 'Model first("top");' \
    "use of deleted function 'Pelko::Model::Model(const Pelko::Model&)'"

# --- The framework: Ruvex/Exception.h, Record.h

refuse 'a refusal by a bare text' 'throw Ruvex::InvalidRequest("no place");' \
    'throw Ruvex::InvalidRequest(Ruvex::InternalError("a place", Ruvex::Error::locate("File", "function", 1)));' \
    "no matching function for call to 'Ruvex::InvalidRequest::InvalidRequest(const char [9])'"
refuse 'a copy of a record' 'Ruvex::Record first("a"); Ruvex::Record copy(first);' 'Ruvex::Record first("a");' \
    "use of deleted function 'Ruvex::Record::Record(const Ruvex::Record&)'"

check() { "$compiler" -std=c++20 -fsyntax-only -fPIC -fmax-errors=0 -I"$work" -I"$root" -I"$root/host" "$@" 2>&1; }

failures=0
if ! right=$(check "$@" "$work/right.cpp"); then
    printf 'FAIL: a right use is refused\n%s\n' "$right"
    failures=1
fi
check "$@" "$work/misuse.cpp" >"$work/diagnostics" || true
for row in "${!whats[@]}"; do
    found=$(sed -n "s/^row $row:[0-9:]* error: //p" "$work/diagnostics" | head -n 1)
    [ "$found" = "${expected[row]}" ] && continue
    printf 'FAIL: %s (expected | found)\n  %s\n  %s\n' "${whats[row]}" "${expected[row]}" "${found:-it compiles}"
    failures=$((failures + 1))
done
printf '%d misuses refused, %d failures\n' "${#whats[@]}" "$failures"
[ "$failures" -eq 0 ]
