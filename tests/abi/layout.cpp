// What a host and the library know of each other's classes: sizes, fields, tables of virtual operations.
// layout.sh reads it from this file's debug information. It compares the classes that are named here, and
// their bases and fields, but no others: the signatures of operations that are not virtual are not followed.
#include "Pelko/CPath.h"
#include "Pelko/Issue.h"
#include "Pelko/Model.h"
#include "Pelko/Net.h"
#include "Pelko/Path.h"
#include "Ruvex/Console.h"
#include "Ruvex/Exception.h"
#include "Ruvex/StandardSlot.h"
#include "Ruvex/Status.h"
#include "Vorlen/Sweep.h"
#include "Vorlen/Timing.h"
#include "Vorlen/Tool.h"

#define SHOWN __attribute__((visibility("default")))

namespace layout {

SHOWN void ofEngine(Vorlen::Tool&, Vorlen::Sweep&, Vorlen::Timing&) {}
SHOWN void ofHost(Pelko::Analyzer&, Pelko::Application&, Pelko::Cell&, Pelko::CPath&, Pelko::DPath&,
                  Pelko::FPath&, Pelko::MPath&, Pelko::Domain&, Pelko::Instance&, Pelko::PLL&, Pelko::WFG&,
                  Pelko::IOConstraint&, Pelko::Issue&, Pelko::Model&, Pelko::Module&, Pelko::Net&,
                  Pelko::ObjectListener&, Pelko::Path&, Pelko::Pin&, Pelko::Pole&, Pelko::Subdomain&) {}
SHOWN void ofValues(Pelko::AnalysisMode&, Pelko::ClockMode&, Pelko::Delay&, Pelko::PseudoMask&, Pelko::Poles&,
                    Pelko::Edges&, Ruvex::Locator<Pelko::Pole*>&, Ruvex::Memory<Pelko::Edge*>&, Ruvex::Label&,
                    Ruvex::Place&, Vorlen::PoleFlags&, Vorlen::PoleTimingMap&, Vorlen::PoleCountMap&,
                    Pelko::CPath::Objects&) {}
SHOWN void ofFramework(Ruvex::Console&, Ruvex::Critical&, Ruvex::Interruption&, Ruvex::InvalidRequest&,
                       Ruvex::FactoryFailed&, Ruvex::Fatal&, Ruvex::HeaderSlot&, Ruvex::NullSlot&,
                       Ruvex::Record&, Ruvex::Status&) {}

} // namespace layout
