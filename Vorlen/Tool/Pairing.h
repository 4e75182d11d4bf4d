// The pairing of a whole phase without its pairs: which launch poles reach an end point matters only by the
// clocks and edges that they launch with, and by which of them comes first where a pair makes a domain.
//
// Launch poles of the same roots and mode are one class, and so are latch poles. Classes are propagated over
// the cone of all end points, as bits: forwards which launch classes reach an end point, backwards which
// latch classes a launch pole reaches. An end point that brings a new pair of classes looks up the first
// launch pole of each new one, in stamp order, and hands it to domain creation. So domains and subdomains are
// created in the order in which the pairs would create them, with the same leaves in the end; also where one
// of their creations throws, the leaves of the pairs before it are there.
//
// Cost: a few steps an arc, 16 bytes a pole for up to 64 classes, and a search of the fan-in for each end
// point that brings more than one new pair of classes.
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

    // False where the design has to be walked: it has loops, an end point that data goes on from (whose stem
    // depends on which is walked first), a clock pole without a mode, or very many classes.
    bool read(const std::vector<Pelko::Pole*>& ends, detail::Cone::IsStart isLaunch);
    // False where host events have changed the design, so that all has to be done again.
    bool run();

private:
    using Word = std::uint64_t;
    using Slot = detail::Slot;

    // Classes of one side, and the classes of slots: some words of bits each.
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
        unsigned last = 0; // what was asked for last
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
    Slot markedEnds_ = 0; // the end points whose walks are marked
    std::vector<Slot> stack_;
    detail::LargeVector<std::uint32_t> visits_; // by slot
    std::uint32_t visit_ = 0;
};

} // namespace Vorlen
