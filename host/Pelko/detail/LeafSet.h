// The launch or latch poles of a subdomain: a set of poles, read in stamp order.
//
// A pole is captured once for each pair of launch and latch pole, and is rarely new. So membership is a hash
// look-up, and the poles are sorted when the set is next read.
#pragma once

#include "Pelko/Edges.h"
#include "Ruvex/Export.h"

#include <unordered_set>
#include <vector>

namespace Pelko::detail {

class PELKO_API LeafSet {
public:
    LeafSet() = default;
    LeafSet(const LeafSet&) = delete;
    LeafSet& operator=(const LeafSet&) = delete;
    ~LeafSet();

    void add(Pole* pole);
    bool contains(Pole* pole) const { return members_.count(pole) != 0; }
    Poles getView() const;

private:
    class Driver;

    const std::vector<Pole*>& getSorted() const;

    std::unordered_set<Pole*> members_;
    mutable std::vector<Pole*> order_;
    mutable bool sorted_ = true;
};

} // namespace Pelko::detail
