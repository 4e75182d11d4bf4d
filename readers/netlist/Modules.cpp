// Which module is the top, and what a leaf is.
#include "readers/netlist/Modules.h"

#include <algorithm>
#include <numeric>

namespace Readers {

namespace {

constexpr std::size_t mostListed = 20; // names in a message

} // namespace

void writeBitName(std::string& text, std::string_view name, const Numbering& numbering, std::size_t bit) {
    text.assign(name);
    if (numbering.vector)
        text.append(1, '[').append(std::to_string(numbering.at(bit))).append(1, ']');
}

bool Module::isLeaf() const {
    if (isBox || !cells.empty())
        return isBox;
    Base::IndexVector<ModuleNetId, bool> seen(nets.size());
    seen[constantNet] = true;
    for (const Port& port : ports)
        for (std::uint32_t i = 0; i < port.bits.count; ++i) {
            const ModuleNetId net = bits[port.bits[i]];
            if (net != Base::none && seen[net])
                return false;
            if (net != Base::none)
                seen[net] = true;
        }
    return true;
}

BitRange Module::addBits(const std::vector<ModuleNetId>& added) {
    const BitRange range{bits.next(), static_cast<std::uint32_t>(added.size())};
    bits.insert(bits.end(), added.begin(), added.end());
    return range;
}

Base::NameTable<ModuleId> Modules::byName() const {
    Base::NameTable<ModuleId> table;
    for (const ModuleId i : all.ids())
        table.add(all[i].name, i);
    return table;
}

ModuleId Modules::findTop(const std::string& wanted) const {
    std::vector<ModuleId> found(all.ids().begin(), all.ids().end());
    if (found.empty())
        fail("there is no module");
    const std::string everything = list(found);
    if (!wanted.empty()) {
        std::erase_if(found, [&](ModuleId i) { return nameOf(all[i]) != wanted; });
        if (found.empty())
            fail("there is no module '" + wanted + "', only " + everything);
        return found.front();
    }
    std::erase_if(found, [&](ModuleId i) { return !all[i].isMarkedTop; });
    if (found.empty())
        found = roots();
    if (found.empty())
        fail("each module is instantiated by another one: give the name of the top by --top, one of " +
             everything);
    if (found.size() > 1)
        fail("more than one module may be the top: give its name by --top, one of " + list(found));
    return found.front();
}

// The modules that no other instantiates, and of those the leaves only if there are no others.
std::vector<ModuleId> Modules::roots() const {
    const Base::NameTable<ModuleId> table = byName();
    Base::IndexVector<ModuleId, bool> used(all.size());
    for (const ModuleId i : all.ids())
        for (const Module::Cell& cell : all[i].cells)
            if (const ModuleId type = table.find(cell.type); type != Base::none && type != i)
                used[type] = true;
    std::vector<ModuleId> found, leaves;
    for (const ModuleId i : all.ids())
        if (!used[i])
            (all[i].isLeaf() ? leaves : found).push_back(i);
    return found.empty() ? leaves : found;
}

std::string Modules::list(const std::vector<ModuleId>& which) const {
    std::string text;
    for (std::size_t i = 0; i < which.size() && i < mostListed; ++i)
        text.append(i == 0 ? "'" : ", '").append(nameOf(all[which[i]])).append("'");
    if (which.size() > mostListed)
        text += " and " + std::to_string(which.size() - mostListed) + " more";
    return text;
}

} // namespace Readers
