#include "Pelko/detail/LeafSet.h"

#include "Pelko/Pole.h"

#include <algorithm>

namespace Pelko::detail {

// A view of an array whose membership test is that of the set.
class LeafSet::Driver final : public Ruvex::DriverOf<Ruvex::CollectionDriver<Pole*>, LeafSet::Driver> {
public:
    explicit Driver(const LeafSet& set) : set_(&set) {}

    Ruvex::Locator<Pole*> getLocator() const override { return view().getLocator(); }
    Ruvex::Memory<Pole*> getMemory() const override { return view().getMemory(); }
    unsigned long getCount() const override { return set_->order_.size(); }
    bool hasCount(unsigned long n) const override { return set_->order_.size() == n; }
    bool isEmpty() const override { return set_->order_.empty(); }
    Pole* getLast() const override { return view().getLast(); }
    Pole* getAt(unsigned long index) const override { return view().getAt(index); }
    bool contains(Pole* const& pole) const override { return set_->contains(pole); }
    std::string _getLabel() const override { return "Leaf collection"; }

private:
    Ruvex::MemoryCollection<Pole*> view() const {
        const std::vector<Pole*>& sorted = set_->getSorted();
        return {sorted.data(), sorted.data() + sorted.size()};
    }

    const LeafSet* set_;
};

LeafSet::~LeafSet() {
    for (Pole* pole : order_)
        Reference::remove(pole);
}

// A latch pole is added once for every launch pole that reaches it, so it is mostly the pole that was added
// last.
void LeafSet::add(Pole* pole) {
    if (!order_.empty() && order_.back() == pole)
        return;
    if (order_.size() == order_.capacity())
        order_.reserve(std::max<std::size_t>(4, 2 * order_.size()));
    if (!members_.insert(pole).second)
        return;
    Reference::add(pole);
    sorted_ = sorted_ && (order_.empty() || Object::StampLess()(order_.back(), pole));
    order_.push_back(pole);
}

const std::vector<Pole*>& LeafSet::getSorted() const {
    if (!sorted_) {
        std::sort(order_.begin(), order_.end(), Object::StampLess());
        sorted_ = true;
    }
    return order_;
}

Poles LeafSet::getView() const { return Driver(*this); }

} // namespace Pelko::detail
