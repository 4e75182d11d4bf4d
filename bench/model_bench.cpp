// The size and the speed of the in-memory model: 7 million poles and 10 million arcs through the public API.
//
// Every pole has one or two arcs, each from one of the 100,000 poles before it. Poles have no names.
#include "Measure.h"
#include "Pelko/Model.h"

#include <random>
#include <vector>

namespace {

constexpr std::size_t poleCount = 7'000'000;
constexpr std::size_t edgeCount = 10'000'000;
constexpr std::size_t window = 100'000;

} // namespace

int main() {
    Pelko::Model model("size");
    const double before = bench::residentBytes();
    std::vector<Pelko::Pole*> poles(poleCount);
    const double table = bench::residentBytes() - before;

    const double poleSeconds = bench::timeOf([&] {
        for (Pelko::Pole*& pole : poles)
            pole = Pelko::Pole::create(model.getCell());
    });
    const double afterPoles = bench::residentBytes();

    std::mt19937 random(1);
    std::size_t made = 0;
    const double edgeSeconds = bench::timeOf([&] {
        for (std::size_t i = 1; i < poleCount && made < edgeCount; ++i) {
            const std::size_t reach = std::min(i, window);
            Pelko::Pole* first = poles[i - 1 - random() % reach];
            Pelko::Edge::create(first, poles[i], Pelko::Delay(1), Pelko::Delay(2));
            ++made;
            if (i % 7 >= 3 || made == edgeCount)
                continue;
            Pelko::Pole* second = poles[i - 1 - random() % reach];
            if (second == first)
                continue;
            Pelko::Edge::create(second, poles[i], Pelko::Delay(1), Pelko::Delay(2));
            ++made;
        }
    });
    const double afterEdges = bench::residentBytes();

    long visited = 0;
    const double walkSeconds = bench::timeOf([&] {
        for (const Pelko::Pole* pole : model.getCell()->getPoles())
            for (const Pelko::Edge* edge : pole->getIncomingEdges())
                visited += int(edge->getMaxDelay());
    });
    const double unmarkSeconds = bench::timeOf([&] {
        for (int i = 0; i < 1'000'000; ++i)
            model.getAnalyzer()->unmark();
    });

    const auto edges = static_cast<double>(made);
    const auto count = static_cast<double>(poleCount);
    std::printf("poles %zu, arcs %zu, checksum %ld\n", poleCount, made, visited);
    std::printf("bytes per pole        %8.1f\n", (afterPoles - before - table) / count);
    std::printf("bytes per arc         %8.1f\n", (afterEdges - afterPoles) / edges);
    std::printf("whole model           %8.3f GB\n", (afterEdges - before - table) / 1e9);
    std::printf("poles a second        %8.2f million\n", count / poleSeconds / 1e6);
    std::printf("arcs a second         %8.2f million (poles made beforehand)\n", edges / edgeSeconds / 1e6);
    std::printf("arcs a second         %8.2f million (making the poles included)\n",
                edges / (edgeSeconds + poleSeconds) / 1e6);
    std::printf("reading all fan-ins   %8.1f ns an arc\n", walkSeconds / edges * 1e9);
    std::printf("unmark                %8.1f ns\n", unmarkSeconds * 1e3);
    return 0;
}
