// The sweeps of one domain, in order of creation. Those that were not finished are destroyed with this
// object; until then nobody else can destroy them.
#pragma once

#include "Vorlen/Sweep.h"
#include "Vorlen/detail/EventPump.h"

#include <list>
#include <optional>

namespace Vorlen {

class DomainSweeps {
public:
    DomainSweeps() = default;
    DomainSweeps(const DomainSweeps&) = delete;
    DomainSweeps& operator=(const DomainSweeps&) = delete;
    ~DomainSweeps() {
        for (Driven& driven : sweeps_) {
            driven.keep.reset();
            if (driven.sweep)
                Sweep::abandon(driven.sweep);
        }
    }

    // Creates the sweep of a subdomain. Its place comes first: if memory runs out, no sweep is left behind.
    Sweep* add(Pelko::Subdomain* subdomain) {
        Driven& place = sweeps_.emplace_back();
        place.sweep = Sweep::create(subdomain);
        place.keep.emplace(place.sweep);
        return place.sweep;
    }

    // Calls `finish(sweep)` for each sweep and destroys the sweep right after it; then host events are
    // processed.
    template <class Finish>
    void finishEach(Finish finish) {
        for (Driven& driven : sweeps_) {
            finish(*driven.sweep);
            driven.keep.reset();
            driven.sweep->destroy();
            driven.sweep = nullptr;
            detail::pump();
        }
    }

private:
    struct Driven {
        Sweep* sweep = nullptr;
        std::optional<Pelko::Object::Keep> keep;
    };

    std::list<Driven> sweeps_;
};

} // namespace Vorlen
