// The exception family: who is caught as whom, and what every exception tells.
#include "tests/support/Thrown.h"

#include <gtest/gtest-spi.h>

#include <vector>

namespace Contract {

namespace {

using namespace Ruvex;

const Place place{"Tool", "prolog", 650};

template <class Caught>
bool isCaughtAs(const std::function<void()>& raise) {
    try {
        raise();
    } catch (const Caught&) {
        return true;
    } catch (...) {
        return false;
    }
    return false;
}

// Names the handlers that catch the exception, out of Exception, Error, Critical, InternalError,
// InvalidRequest, FactoryFailed, Fatal, Interruption.
std::string catchersOf(const std::function<void()>& raise) {
    std::string names;
    const auto note = [&names](bool caught, const char* name) {
        names += caught ? std::string(" ") + name : "";
    };
    note(isCaughtAs<std::exception>(raise), "std");
    note(isCaughtAs<Exception>(raise), "Exception");
    note(isCaughtAs<Error>(raise), "Error");
    note(isCaughtAs<Critical>(raise), "Critical");
    note(isCaughtAs<InternalError>(raise), "InternalError");
    note(isCaughtAs<InvalidRequest>(raise), "InvalidRequest");
    note(isCaughtAs<FactoryFailed>(raise), "FactoryFailed");
    note(isCaughtAs<Fatal>(raise), "Fatal");
    note(isCaughtAs<Interruption>(raise), "Interruption");
    return names;
}

struct Row {
    const char* name;
    std::function<void()> raise;
    const char* catchers;
    const std::type_info& kind;
    Place place;
};

const std::vector<Row>& rows() {
    const auto located = Error::locate("Tool", "prolog", 650);
    static const std::vector<Row> table{
        {"exception", [=] { throw Exception("m", located); }, " std Exception", typeid(Exception), place},
        {"error", [=] { throw Error("m", located); }, " std Exception Error", typeid(Error), place},
        {"critical", [=] { throw Critical("m", located); }, " std Exception Error Critical", typeid(Critical),
         place},
        {"critical of an error", [=] { throw Critical(Error("m", located)); },
         " std Exception Error Critical", typeid(Critical), place},
        {"internal error", [=] { throw InternalError("m", located); }, " std Exception InternalError",
         typeid(InternalError), place},
        {"invalid request", [=] { throw InvalidRequest(InternalError("m", located)); },
         " std Exception InternalError InvalidRequest", typeid(InvalidRequest), place},
        {"factory failed", [=] { throw FactoryFailed(InternalError("m", located)); },
         " std Exception InternalError FactoryFailed", typeid(FactoryFailed), place},
        {"fatal", [=] { throw Fatal(InternalError("m", located)); }, " std Exception InternalError Fatal",
         typeid(Fatal), place},
        {"interruption", [=] { throw Interruption("m", located); }, " std Exception Interruption",
         typeid(Interruption), place},
        {"no place: exception", [] { throw Exception("m"); }, " std Exception", typeid(Exception), {}},
        {"no place: fatal",
         [] { throw Fatal(InternalError("m")); },
         " std Exception InternalError Fatal",
         typeid(Fatal),
         {}},
        {"no place: interruption",
         [] { throw Interruption("m"); },
         " std Exception Interruption",
         typeid(Interruption),
         {}},
    };
    return table;
}

TEST(Exceptions, Family) {
    for (const Row& row : rows()) {
        EXPECT_EQ(catchersOf(row.raise), row.catchers) << row.name;
        Support::expectThrown({row.name, row.raise, row.kind, "m", row.place});
    }
}

TEST(Exceptions, TellMessageAndPlace) {
    struct {
        Exception exception;
        const char* message;
        bool known;
        const char* label;
    } const table[] = {
        {Exception("Null pole", place), "Null pole", true, "Null pole (Tool, prolog, 650)"},
        {Exception("Null pole"), "Null pole", false, "Null pole"},
        {Exception("", place), "", true, " (Tool, prolog, 650)"},
        {InvalidRequest(InternalError("Null edge", Error::locate("Sweep", "calculateLSlack", 811))),
         "Null edge", true, "Null edge (Sweep, calculateLSlack, 811)"},
    };
    for (const auto& row : table) {
        const Exception copy = row.exception;
        EXPECT_EQ(copy.getMessage(), row.message);
        EXPECT_STREQ(copy.what(), row.message);
        EXPECT_EQ(copy.getPlace().isKnown(), row.known);
        EXPECT_EQ(copy._getLabel(), row.label);
    }
}

TEST(Exceptions, Locate) {
    const Place located = Error::locate("Sweep", "analyze", 12);
    EXPECT_EQ(located.file, "Sweep");
    EXPECT_EQ(located.function, "analyze");
    EXPECT_EQ(located.line, 12u);
    EXPECT_EQ(located, (Place{"Sweep", "analyze", 12}));
    EXPECT_NE(located, (Place{"Sweep", "analyze", 13}));
    EXPECT_NE(located, (Place{"Sweep", "destroy", 12}));
    EXPECT_NE(located, (Place{"Tool", "analyze", 12}));
}

// The helper that checks exceptions must not accept less.
TEST(Exceptions, CheckedWhole) {
    static const auto expect = [](const std::type_info& kind, const char* message, unsigned line) {
        Support::expectThrown({"thrown",
                               [] { throw FactoryFailed(InternalError("m", place)); },
                               kind,
                               message,
                               {"Tool", "prolog", line}});
    };
    expect(typeid(FactoryFailed), "m", 650);
    EXPECT_NONFATAL_FAILURE(expect(typeid(InternalError), "m", 650), "fault.kind");
    EXPECT_NONFATAL_FAILURE(expect(typeid(FactoryFailed), "n", 650), "getMessage");
    EXPECT_NONFATAL_FAILURE(expect(typeid(FactoryFailed), "m", 651), "getPlace");
    EXPECT_NONFATAL_FAILURE(Support::expectThrown({"nothing", [] {}, typeid(Exception), "m", {}}),
                            "threw nothing");
}

} // namespace

} // namespace Contract
