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
    std::vector<bool> seen(nets.size());
    seen[constantNet] = true;
    for (const Port& port : ports)
        for (std::uint32_t i = 0; i < port.bits.count; ++i) {
            const std::uint32_t net = bits[port.bits.first + i];
            if (net != Base::none && seen[net])
                return false;
            if (net != Base::none)
                seen[net] = true;
        }
    return true;
}

BitRange Module::addBits(const std::vector<std::uint32_t>& added) {
    const BitRange range{static_cast<std::uint32_t>(bits.size()), static_cast<std::uint32_t>(added.size())};
    bits.insert(bits.end(), added.begin(), added.end());
    return range;
}

Base::NameTable Modules::byName() const {
    Base::NameTable table;
    for (std::uint32_t i = 0; i < all.size(); ++i)
        table.add(all[i].name, i);
    return table;
}

std::uint32_t Modules::findTop(const std::string& wanted) const {
    std::vector<std::uint32_t> found(all.size());
    std::iota(found.begin(), found.end(), 0U);
    if (found.empty())
        fail("there is no module");
    const std::string everything = list(found);
    if (!wanted.empty()) {
        std::erase_if(found, [&](std::uint32_t i) { return nameOf(all[i]) != wanted; });
        if (found.empty())
            fail("there is no module '" + wanted + "', only " + everything);
        return found.front();
    }
    std::erase_if(found, [&](std::uint32_t i) { return !all[i].isMarkedTop; });
    if (found.empty())
        found = roots();
    if (found.empty())
        fail("each module is instantiated by another one: give the name of the top by --top, one of " +
             everything);
    if (found.size() > 1)
        fail("more than one module may be the top: give its name by --top, one of " + list(found));
    return found.front();
}

// The modules that no other instantiates, and of those the leaves only where there is nothing else.
std::vector<std::uint32_t> Modules::roots() const {
    const Base::NameTable table = byName();
    std::vector<bool> used(all.size());
    for (std::uint32_t i = 0; i < all.size(); ++i)
        for (const Module::Cell& cell : all[i].cells)
            if (const std::uint32_t type = table.find(cell.type); type != Base::none && type != i)
                used[type] = true;
    std::vector<std::uint32_t> found, leaves;
    for (std::uint32_t i = 0; i < all.size(); ++i)
        if (!used[i])
            (all[i].isLeaf() ? leaves : found).push_back(i);
    return found.empty() ? leaves : found;
}

std::string Modules::list(const std::vector<std::uint32_t>& which) const {
    std::string text;
    for (std::size_t i = 0; i < which.size() && i < mostListed; ++i)
        text.append(i == 0 ? "'" : ", '").append(nameOf(all[which[i]])).append("'");
    if (which.size() > mostListed)
        text += " and " + std::to_string(which.size() - mostListed) + " more";
    return text;
}

} // namespace Readers
