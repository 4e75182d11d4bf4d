// Which reader reads a netlist.
#include "readers/netlist/Read.h"

#include "readers/netlist/Flatten.h"
#include "readers/netlist/Json.h"
#include "readers/netlist/Verilog.h"

#include <string_view>

namespace Readers {

namespace {

bool isJson(Input& input) {
    std::string_view name = input.path();
    if (constexpr std::string_view compressed = ".gz"; name.ends_with(compressed))
        name.remove_suffix(compressed.size());
    return name.ends_with(".json") || (!name.ends_with(".v") && input.firstByte() == '{');
}

} // namespace

Design::Netlist readNetlist(Base::Source& source, const std::string& top, Base::Diagnostics& diagnostics) {
    Input input(source);
    return flatten(isJson(input) ? readJsonModules(input) : readVerilogModules(input, diagnostics), top,
                   diagnostics);
}

Design::Netlist readNetlist(const std::string& path, const std::string& top, Base::Diagnostics& diagnostics) {
    Base::Source source(path);
    return readNetlist(source, top, diagnostics);
}

} // namespace Readers
