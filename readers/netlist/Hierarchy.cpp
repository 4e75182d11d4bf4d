// A walk over the modules that the top needs, each once, with a stack of its own.
#include "readers/netlist/Hierarchy.h"

#include <algorithm>
#include <limits>

namespace Readers {

namespace {

// A path is written once for each cell below it, so that names grow by the square of the depth.
constexpr std::uint32_t mostLevels = 1'000;
// What one of them takes in a flat netlist and while it is made: entries of tables, which grow by doubling,
// and of the table of names.
constexpr std::uint64_t bytesPerName = 64;
constexpr std::uint64_t bytesPerCell = 24 + bytesPerName;
constexpr std::uint64_t bytesPerPin = 24;
constexpr std::uint64_t bytesPerNet = 32 + bytesPerName;
constexpr std::size_t mostOfCycle = 10; // modules in a message

constexpr std::uint64_t largest = std::numeric_limits<std::uint64_t>::max();

void addUp(std::uint64_t& sum, std::uint64_t more) { sum = more > largest - sum ? largest : sum + more; }

std::uint64_t product(std::uint64_t a, std::uint64_t b) {
    return b != 0 && a > largest / b ? largest : a * b;
}

// "4.3 GB", "8192 GB": of 2^30 bytes.
std::string toGigabytes(std::uint64_t bytes) {
    const std::uint64_t tenths = bytes / ((std::uint64_t{1} << 30) / 10);
    return std::to_string(tenths / 10) + (tenths < 1'000 ? "." + std::to_string(tenths % 10) : "") + " GB";
}

} // namespace

std::uint64_t HierarchySize::bytes() const {
    std::uint64_t sum = nameBytes;
    addUp(sum, product(cells, bytesPerCell));
    addUp(sum, product(pins, bytesPerPin));
    addUp(sum, product(nets, bytesPerNet));
    return sum;
}

Hierarchy::Hierarchy(const Modules& modules, ModuleId top)
    : modules_(modules), byName_(modules.byName()), states_(modules.all.size()), sizes_(modules.all.size()) {
    for (const Module& module : modules.all)
        leaves_.push_back(module.isLeaf());
    measure(top);
    checkLimits(top);
}

void Hierarchy::measure(ModuleId top) {
    std::vector<Frame> frames{{top}};
    states_[top] = State::open;
    sizes_[top] = ownSize(modules_.all[top]);
    while (!frames.empty()) {
        Frame& frame = frames.back();
        const Module& module = modules_.all[frame.module];
        if (frame.cell == module.cells.next()) {
            if (tooLarge_ == Base::none && sizes_[frame.module].bytes() > HierarchySize::mostBytes)
                tooLarge_ = frame.module; // the first from the leaves up, which is the one to name
            states_[frame.module] = State::known;
            frames.pop_back();
            continue;
        }
        const Module::Cell& cell = module.cells[frame.cell];
        const ModuleId type = typeOf(cell);
        if (isLeaf(type) || states_[type] == State::known) {
            add(sizes_[frame.module], module, cell, type);
            ++frame.cell;
            continue;
        }
        if (states_[type] == State::open)
            failAtCycle(frames, type);
        states_[type] = State::open;
        sizes_[type] = ownSize(modules_.all[type]);
        frames.push_back({type});
    }
}

HierarchySize Hierarchy::ownSize(const Module& module) const {
    HierarchySize size;
    size.nets = module.nets.size();
    for (const Module::Net& net : module.nets)
        if (net.name != noName)
            size.nameBytes += modules_.names[net.name].size();
    return size;
}

void Hierarchy::add(HierarchySize& size, const Module& module, const Module::Cell& cell,
                    ModuleId type) const {
    const std::uint64_t nameBytes = modules_.names[cell.name].size();
    addUp(size.cells, 1);
    addUp(size.nameBytes, nameBytes);
    if (isLeaf(type)) {
        for (std::uint32_t i = 0; i < cell.connectionCount; ++i)
            addUp(size.pins, std::max(module.connections[cell.connection(i)].bits.count, 1U));
        if (type != Base::none)
            addUp(size.pins, modules_.all[type].bits.size());
        return;
    }
    const HierarchySize& below = sizes_[type];
    addUp(size.cells, below.cells);
    addUp(size.pins, below.pins);
    addUp(size.nets, below.nets);
    addUp(size.nameBytes, below.nameBytes);
    addUp(size.nameBytes, product(nameBytes + 1, below.cells));
    addUp(size.nameBytes, product(nameBytes + 1, below.nets));
    size.levels = std::max(size.levels, below.levels + 1);
}

void Hierarchy::failAtCycle(const std::vector<Frame>& frames, ModuleId again) const {
    const auto isAgain = [&](const Frame& frame) { return frame.module == again; };
    const auto begin = std::find_if(frames.begin(), frames.end(), isAgain);
    const auto count = static_cast<std::size_t>(frames.end() - begin);
    std::string way;
    for (std::size_t i = 0; i < std::min(count, mostOfCycle); ++i) {
        const Frame& frame = begin[static_cast<std::ptrdiff_t>(i)];
        way.append("'").append(modules_.nameOf(modules_.all[frame.module])).append("' -> ");
    }
    if (count > mostOfCycle)
        way += "... -> ";
    const Module::Cell& cell = modules_.all[frames.back().module].cells[frames.back().cell];
    throw Base::BadInput(cell.position.in(modules_.file),
                         "a module instantiates itself: " + way + "'" +
                             std::string(modules_.nameOf(modules_.all[again])) + "'");
}

void Hierarchy::checkLimits(ModuleId top) const {
    if (sizes_[top].levels > mostLevels)
        modules_.fail("the hierarchy has " + std::to_string(sizes_[top].levels) + " levels, more than " +
                      std::to_string(mostLevels));
    if (tooLarge_ == Base::none)
        return;
    const HierarchySize& size = sizes_[tooLarge_];
    modules_.fail("module '" + std::string(modules_.nameOf(modules_.all[tooLarge_])) +
                  "' with everything in it would take " + toGigabytes(size.bytes()) + " of memory (" +
                  std::to_string(size.cells) + " cells, " + std::to_string(size.pins) + " pins, " +
                  std::to_string(size.nets) + " nets), more than the " +
                  toGigabytes(HierarchySize::mostBytes) + " that a netlist may take");
}

} // namespace Readers
