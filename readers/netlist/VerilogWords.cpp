// One table, looked up for each name that may not be a keyword.
#include "readers/netlist/VerilogWords.h"

#include <initializer_list>
#include <unordered_map>

namespace Readers {

namespace {

using Word = VerilogWord;

const std::unordered_map<std::string_view, Word>& words() {
    static const std::unordered_map<std::string_view, Word> table = [] {
        std::unordered_map<std::string_view, Word> made;
        const auto add = [&](Word word, std::initializer_list<std::string_view> texts) {
            for (const std::string_view text : texts)
                made.emplace(text, word);
        };
        add(Word::input, {"input"});
        add(Word::output, {"output"});
        add(Word::inout, {"inout"});
        add(Word::wire, {"wire", "tri", "wand", "wor", "triand", "trior", "tri0", "tri1", "trireg", "uwire"});
        add(Word::supply, {"supply0", "supply1"});
        add(Word::assign, {"assign"});
        add(Word::parameter, {"parameter", "localparam", "defparam", "specparam"});
        add(Word::specify, {"specify"});
        add(Word::gate, {"and", "nand", "or", "nor", "xor", "xnor"});
        add(Word::buffer, {"buf", "not"});
        add(Word::switched, {"bufif0", "bufif1", "notif0", "notif1", "nmos", "pmos", "rnmos", "rpmos"});
        add(Word::pull, {"pullup", "pulldown"});
        add(Word::tran, {"tran", "rtran"});
        add(Word::module, {"module", "macromodule"});
        add(Word::end, {"endmodule"});
        add(Word::variable, {"reg"});
        add(Word::number, {"integer", "real", "realtime", "time", "event", "genvar"});
        add(Word::initial, {"initial"});
        add(Word::process,
            {"always", "always_comb", "always_ff", "always_latch", "for", "if", "case", "casex", "casez",
             "begin", "force", "deassign", "tranif0", "tranif1", "cmos", "rcmos", "rtranif0", "rtranif1"});
        add(Word::routine, {"function", "task"});
        add(Word::generate, {"generate", "endgenerate"});
        add(Word::detail, {"signed", "unsigned", "scalared", "vectored"});
        return made;
    }();
    return table;
}

} // namespace

std::optional<VerilogWord> findWord(std::string_view text) {
    if (text.empty() || text.front() < 'a' || text.front() > 'z')
        return std::nullopt;
    static const std::unordered_map<std::string_view, Word>& table = words();
    const auto found = table.find(text);
    return found == table.end() ? std::nullopt : std::optional(found->second);
}

} // namespace Readers
