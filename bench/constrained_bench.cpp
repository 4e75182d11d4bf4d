// Sixty exceptions with 100,000 sources each on a design of a million arcs, and a clock net of a million
// pins.
#include "LayeredDesign.h"
#include "Measure.h"
#include "Vorlen/Tool.h"

namespace {

void tagExceptions() {
    Pelko::Model model("constrained");
    constexpr std::size_t width = 100'000;
    constexpr unsigned depth = 8;
    constexpr unsigned exceptions = 60;
    std::mt19937 random(3);
    std::vector<Pelko::Pole*> sources;
    for (std::size_t i = 0; i < width; ++i)
        sources.push_back(Pelko::Pole::createInput(model.getCell()));
    std::vector<Pelko::Pole*> layer = sources;
    for (unsigned level = 0; level < depth; ++level) {
        std::vector<Pelko::Pole*> next;
        for (std::size_t i = 0; i < width; ++i) {
            next.push_back(Pelko::Pole::create(model.getCell()));
            Pelko::Edge::create(layer[i], next.back(), Pelko::Delay(1), Pelko::Delay(1));
            if (const std::size_t other = random() % width; other != i && i % 4 == 0)
                Pelko::Edge::create(layer[other], next.back(), Pelko::Delay(1), Pelko::Delay(1));
        }
        layer = std::move(next);
    }
    for (unsigned i = 0; i < exceptions; ++i)
        Pelko::MPath::create({.sources = sources, .targets = layer}, 2);
    Vorlen::Tool* tool = Vorlen::Tool::create();
    tool->prolog();
    const double seconds = bench::timeOf([&] { tool->tagConstrainedPaths(); });
    std::printf("%u exceptions, %zu sources each, %lu arcs: tagged in %.2f s, %.1f ms an exception\n",
                exceptions, width, model.getCell()->getEdges().getCount(), seconds,
                1000 * seconds / exceptions);
    std::fflush(stdout);
    tool->destroy();
}

void stemWideClock() {
    Pelko::Model model("clock net");
    Pelko::Pole* source = Pelko::Pole::createClockSource(model.getCell());
    Pelko::Pole* buffer = Pelko::Pole::create(model.getCell());
    Pelko::Edge::create(source, buffer, Pelko::Delay(1), Pelko::Delay(1));
    Pelko::Pin* pin = Pelko::Pin::create(model.getModule(), "C");
    for (unsigned i = 0; i < 1'000'000; ++i)
        Pelko::Edge::create(buffer, Pelko::Pole::createClock(model.getCell(), pin, Pelko::ClockMode::Rising),
                            Pelko::Delay(1), Pelko::Delay(1));
    Vorlen::Tool* tool = Vorlen::Tool::create();
    tool->prolog();
    Vorlen::StemPoleSetMap stems;
    const double seconds = bench::timeOf([&] { tool->clockStem(stems); });
    std::printf("a clock net of 1000000 pins: stems in %.2f s\n", seconds);
    tool->destroy();
}

} // namespace

int main() {
    tagExceptions();
    stemWideClock();
    return 0;
}
