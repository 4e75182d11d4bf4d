// What the expressions of a netlist mean for the design: inverted connections, and cells that only compute.
#include "readers/sdf/Annotate.h"

#include <algorithm>

namespace Readers {

namespace {

void exchange(Design::Transition& edge) {
    if (edge != Design::Transition::any)
        edge = edge == Design::Transition::rise ? Design::Transition::fall : Design::Transition::rise;
}

} // namespace

// The delays name edges at the pin. Clocks are known by their edges on nets, and of an inverted pin those are
// the other ones.
void Annotator::applyExpressions() {
    joinExpressions();
    if (invertedPins_.empty())
        return;
    Base::IndexVector<Design::PinId, bool> isInverted(design_.pins.size());
    for (const Design::PinId pin : invertedPins_)
        isInverted[pin] = true;
    for (Design::Arc& arc : design_.arcs)
        if (!arc.wire && isInverted[arc.from])
            exchange(arc.fromEdge);
    for (Design::Check& check : design_.checks)
        if (isInverted[check.clock])
            exchange(check.clockEdge);
    for (Design::PulseCheck& check : design_.pulseChecks)
        if (isInverted[check.pin])
            exchange(check.edge);
}

// The module of an expression may be a cell of the library, whose delays the file has.
void Annotator::joinExpressions() {
    if (expressionCells_.empty())
        return;
    Base::IndexVector<Design::CellId, bool> hasDelays(design_.cells.size());
    for (const Design::Arc& arc : design_.arcs)
        if (!arc.wire && !design_.isPortOfTop(arc.from))
            hasDelays[design_.pins[arc.from].cell] = true;
    for (const Design::CellId cell : expressionCells_)
        for (const Design::PinId from : design_.pinsOfCell(cell))
            for (const Design::PinId to : design_.pinsOfCell(cell))
                if (!hasDelays[cell] && from != to && receives(from) && drives(to))
                    addBareArc(from, to, false);
}

} // namespace Readers
