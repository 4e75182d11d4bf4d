// Checks an exception whole: its exact type, its message and its place. Tables of faults read
//
//   {"push null", [&] { tool->loopPush(nullptr); }, typeid(Ruvex::InvalidRequest), "Null pole", {"Tool",
//   "loopPush", 566}},
#pragma once

#include "Ruvex/Exception.h"

#include <gtest/gtest.h>

#include <functional>
#include <string>
#include <typeinfo>
#include <vector>

namespace Support {

struct Fault {
    const char* what;
    std::function<void()> action;
    const std::type_info& kind;
    std::string message;
    Ruvex::Place place; // default: not located
};

inline void expectThrown(const Fault& fault) {
    SCOPED_TRACE(fault.what);
    try {
        fault.action();
    } catch (const Ruvex::Exception& exception) {
        EXPECT_EQ(typeid(exception), fault.kind) << typeid(exception).name();
        EXPECT_EQ(exception.getMessage(), fault.message);
        EXPECT_EQ(exception.getPlace(), fault.place) << exception._getLabel();
        return;
    }
    ADD_FAILURE() << "threw nothing";
}

inline void expectThrown(const std::vector<Fault>& faults) {
    for (const Fault& fault : faults)
        expectThrown(fault);
}

} // namespace Support
