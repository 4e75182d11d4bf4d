// The order of traced paths, and which of them are kept.
#include "analysis/KeptPaths.h"

#include <algorithm>
#include <iterator>
#include <ranges>
#include <utility>

namespace Analysis {

bool KeptPaths::Order::operator()(const KeptPath& a, const KeptPath& b) const {
    if (a.path.slack != b.path.slack)
        return a.path.slack < b.path.slack;
    if (a.end != b.end)
        return order->isBefore(a.end, b.end);
    if (order->isBefore(a.by, b.by) || order->isBefore(b.by, a.by))
        return order->isBefore(a.by, b.by);
    const auto backwards = [](const Report::Path& path) { return path.points | std::views::reverse; };
    const auto first = backwards(a.path), second = backwards(b.path);
    const auto [one, other] =
        std::ranges::mismatch(first, second, {}, &Report::Point::pin, &Report::Point::pin);
    if (one != first.end() && other != second.end())
        return one->pin < other->pin;
    if (one != first.end() || other != second.end())
        return one == first.end();
    return a.path.inputDelay < b.path.inputDelay;
}

bool KeptPaths::isWanted(Design::PinId end, Time slack) const {
    if (limits_.paths == 0)
        return false;
    if (const auto own = byEnd_.find(end); own != byEnd_.end() && own->second.size() >= limits_.perEndpoint)
        return slack <= own->second.back()->path.slack;
    if (all_.size() < limits_.paths)
        return true;
    const KeptPath& last = *all_.rbegin();
    return slack < last.path.slack ||
           (slack == last.path.slack && (end == last.end || order_.isBefore(end, last.end)));
}

bool KeptPaths::keep(KeptPath path) {
    auto& own = byEnd_[path.end];
    const bool full = own.size() >= limits_.perEndpoint;
    if (!full && all_.size() >= limits_.paths && !all_.key_comp()(path, *all_.rbegin()))
        return false;
    if (full && !all_.key_comp()(path, *own.back()))
        return false;
    const auto place = all_.insert(std::move(path));
    own.insert(std::ranges::upper_bound(own, *place, all_.key_comp(),
                                        [](Paths::iterator of) -> const KeptPath& { return *of; }),
               place);
    if (!full && all_.size() <= limits_.paths)
        return true;
    const auto dropped = full ? own.back() : std::prev(all_.end());
    byEnd_[dropped->end].pop_back();
    all_.erase(dropped);
    return true;
}

void KeptPaths::moveTo(std::vector<Report::Path>& to) {
    byEnd_.clear();
    while (!all_.empty())
        to.push_back(std::move(all_.extract(all_.begin()).value().path));
}

} // namespace Analysis
