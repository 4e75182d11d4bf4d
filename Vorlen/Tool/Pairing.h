// The domains and subdomains of all pairs of launch pole and end point, without visiting each pair. Only the
// clocks and edges of the launch poles that reach an end point matter, and which of these poles comes first
// when a pair creates a domain.
//
// Launch poles with the same roots and mode form one class, and so do latch poles. Classes are propagated as
// bits over the cone of all end points: forwards to find which launch classes reach an end point, backwards
// to find which latch classes a launch pole reaches. If an end point has a new pair of classes, the first
// launch pole of each new class, in stamp order, is passed to domain creation. So domains and subdomains are
// created in the same order, and with the same leaves, as if all pairs were visited. If a creation throws,
// the leaves of the pairs before it are captured.
//
// Cost: a few steps for each arc, 16 bytes for each pole if there are up to 64 classes, and a search of the
// fan-in for each end point with more than one new pair of classes.
#pragma once

#include "Vorlen/Cone/Cone.h"
#include "Vorlen/Tool.h"
#include "Vorlen/Tool/ClockSides.h"

#include <cstdint>
#include <map>
#include <vector>

namespace Pelko {
class Subdomain;
} // namespace Pelko

namespace Vorlen {

class Pairing {
public:
    Pairing(Tool& tool, const StemPoleSetMap& clockStems) : tool_(tool), clockStems_(clockStems) {}

    // Reads the cone of the end points. Returns false if the pairs have to be walked one by one, because the
    // design has a loop, an end point with fan-out (whose stem depends on the order of the walks), a clock
    // pole without a mode, or very many classes.
    bool read(const std::vector<Pelko::Pole*>& ends, detail::Cone::IsStart isLaunch);
    // Creates the domains and captures the leaves. Returns false if host events have changed the design, so
    // that everything has to be done again.
    bool run();

private:
    using Word = std::uint64_t;
    using Slot = detail::Slot;

    // The classes of one side, and for each slot a set of classes, as words of bits.
    struct Classes {
        using Key = std::pair<int, std::vector<Pelko::Pole*>>; // mode and roots

        unsigned getNumber(const ClockSide& side);
        unsigned lookUp(const ClockSide& side);
        void place(std::size_t slots) {
            words = (sides.size() + 63) / 64;
            bits.assign(slots * words, 0);
        }
        Word* at(Slot slot) { return &bits[slot * words]; }
        void add(Slot slot, unsigned number) { at(slot)[number / 64] |= Word{1} << (number % 64); }
        void merge(Slot from, Slot into) {
            for (std::size_t i = 0; i < words; ++i)
                at(into)[i] |= at(from)[i];
        }
        bool contains(Slot slot, unsigned number) {
            return (at(slot)[number / 64] >> (number % 64) & 1) != 0;
        }

        std::vector<ClockSide> sides; // by number
        std::map<Key, unsigned> numbers;
        unsigned last = 0; // the result of the last look-up
        std::size_t words = 0;
        detail::LargeVector<Word> bits; // by slot
    };

    struct PairOfClasses {
        bool isSeen = false;
        std::vector<Pelko::Subdomain*> subdomains;
    };

    bool goesOnFromEnds() const;
    bool classify();
    void propagateLaunches();
    void propagateLatches(std::size_t ends);
    PairOfClasses& pairOf(unsigned launch, unsigned latch) {
        return pairs_[launch * latches_.sides.size() + latch];
    }

    void pairEnd(Slot end);
    void createPairs(Slot end, const std::vector<unsigned>& fresh);
    std::vector<Slot> findFirst(Slot end, const std::vector<unsigned>& fresh);
    std::vector<Slot> findLaunches(Slot end);
    void captureLatch(Slot end);
    void captureLaunches(std::size_t ends);
    void markBehind(Slot end);
    template <class Enter>
    void walk(Slot end, Enter enter);

    Tool& tool_;
    const StemPoleSetMap& clockStems_;
    detail::Cone cone_;
    std::size_t endCount_ = 0;
    std::vector<Slot> launchSlots_;
    std::vector<unsigned> launchClasses_;       // by number in launchSlots_
    detail::LargeVector<unsigned> classOfSlot_; // of launch poles, by slot
    std::vector<unsigned> latchClasses_;        // by end
    std::vector<Pelko::Pole*> latchPoles_;      // by end
    Classes launches_;
    Classes latches_;
    std::vector<PairOfClasses> pairs_;
    Slot markedEnds_ = 0; // the number of end points behind which poles are marked
    std::vector<Slot> stack_;
    detail::LargeVector<std::uint32_t> visits_; // by slot
    std::uint32_t visit_ = 0;
};

} // namespace Vorlen
