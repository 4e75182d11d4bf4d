// Checks that a call is rejected: by an exception of exactly this type, with this message and place, and
// without a change of the database. A row of the tables:
//
//   {"what", [&] { Edge::create(a, a, ...); }, typeid(Ruvex::FactoryFailed), "Edge from a pole to itself",
//    {"Edge", "preCreate", 3}},
#pragma once

#include "Snapshot.h"
#include "tests/support/Thrown.h"

namespace HostTest {

using Refusal = Support::Fault;

inline const std::type_info& invalidRequest = typeid(Ruvex::InvalidRequest);
inline const std::type_info& factoryFailed = typeid(Ruvex::FactoryFailed);

inline void expectRefused(const Refusal& refusal) {
    SCOPED_TRACE(refusal.what);
    const std::string before = takeSnapshot();
    Support::expectThrown(refusal);
    EXPECT_EQ(takeSnapshot(), before);
}

inline void expectRefused(const std::vector<Refusal>& refusals) {
    for (const Refusal& refusal : refusals)
        expectRefused(refusal);
}

} // namespace HostTest
