// The clock groups of an analyzer: which clocks are exclusive or asynchronous to each other.
#include "Pelko/Analyzer.h"
#include "Ruvex/Refusal.h"

#include <algorithm>
#include <unordered_set>

namespace Pelko {

namespace {

void require(bool condition, const char* function, unsigned line, const char* message) {
    Ruvex::require<Ruvex::InvalidRequest>(condition, "Analyzer", function, line, message);
}

// All single groups of a kind are kept as one statement. A clock has a number in it that stands for the set
// of single groups that contain it, and two clocks are separated if their numbers differ. So a pair of clocks
// costs one look-up for any number of single groups.
void addSingleGroup(const std::vector<Pole*>& group, std::unordered_map<const Pole*, std::size_t>& numberOf) {
    static std::size_t lastNumber = 0;
    std::unordered_map<std::size_t, std::size_t> numbers; // without this group -> with it; 0: no group
    for (Pole* root : std::unordered_set<Pole*>(group.begin(), group.end())) {
        const auto [place, isNew] = numberOf.try_emplace(root, 0);
        if (isNew)
            Reference::add(root);
        std::size_t& number = numbers[place->second];
        if (number == 0)
            number = ++lastNumber;
        place->second = number;
    }
}

} // namespace

void Analyzer::addClockGroups(GroupKind kind, const std::vector<std::vector<Pole*>>& groups) {
    require(!groups.empty(), "addClockGroups", 3, "No clock group");
    if (groups.size() == 1) {
        for (const Pole* root : groups.front())
            require(root, "addClockGroups", 4, "Null clock root");
        auto statement =
            std::find_if(clockGroups_.begin(), clockGroups_.end(),
                         [kind](const ClockGroups& other) { return other.single && other.kind == kind; });
        if (statement == clockGroups_.end())
            statement = clockGroups_.insert(clockGroups_.end(), ClockGroups{kind, {}, true});
        return addSingleGroup(groups.front(), statement->groupOf);
    }
    ClockGroups statement{kind, {}, false};
    for (std::size_t group = 0; group < groups.size(); ++group)
        for (const Pole* root : groups[group]) {
            require(root, "addClockGroups", 4, "Null clock root");
            const auto [place, isNew] = statement.groupOf.emplace(root, group);
            require(isNew || place->second == group, "addClockGroups", 5, "Clock in two groups");
        }
    clockGroups_.push_back(std::move(statement));
    for (const auto& entry : clockGroups_.back().groupOf)
        Reference::add(const_cast<Pole*>(entry.first));
}

void Analyzer::clearClockGroups() {
    for (const ClockGroups& statement : clockGroups_)
        for (const auto& entry : statement.groupOf)
            Reference::remove(const_cast<Pole*>(entry.first));
    clockGroups_.clear();
}

bool Analyzer::isSeparated(GroupKind kind, const Domain* domain) const {
    require(domain, "isSeparated", 6, "Null domain");
    const Pole* launch = domain->getLaunchRoot();
    const Pole* latch = domain->getLatchRoot();
    if (!launch || !latch)
        return false;
    return std::any_of(clockGroups_.begin(), clockGroups_.end(), [&](const ClockGroups& statement) {
        if (statement.kind != kind)
            return false;
        const auto launchGroup = statement.groupOf.find(launch);
        const auto latchGroup = statement.groupOf.find(latch);
        const bool launchIn = launchGroup != statement.groupOf.end();
        const bool latchIn = latchGroup != statement.groupOf.end();
        if (launchIn && latchIn)
            return launchGroup->second != latchGroup->second;
        return statement.single && launchIn != latchIn;
    });
}

} // namespace Pelko
