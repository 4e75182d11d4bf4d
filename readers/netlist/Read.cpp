// Which reader reads a netlist.
#include "Read.h"

#include "Flatten.h"
#include "Json.h"
#include "Verilog.h"

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

Netlist readNetlist(Source& source, const std::string& top, Diagnostics& diagnostics) {
    Input input(source);
    return flatten(isJson(input) ? readJsonModules(input) : readVerilogModules(input, diagnostics), top,
                   diagnostics);
}

Netlist readNetlist(const std::string& path, const std::string& top, Diagnostics& diagnostics) {
    Source source(path);
    return readNetlist(source, top, diagnostics);
}

} // namespace Readers
