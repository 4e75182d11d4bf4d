// The path search on ladders of reconvergent stages: every stage doubles the paths. Three ladders: all arcs
// equal; random delays of the two ways of a stage; and the worst order, in which every path found is worse
// than the one before.
//
// "paths made" is how often the search reached the end of a path. A run is stopped after three million.
#include "Measure.h"
#include "Pelko/Model.h"
#include "Vorlen/Sweep.h"

#include <functional>
#include <limits>
#include <random>

namespace {

using Pelko::Delay;
using Pelko::Edge;
using Pelko::Pole;

constexpr unsigned long patience = 3'000'000;

struct GivenUp {};

class PathCounter : public Pelko::ObjectListener {
public:
    void onCreated(Pelko::Object* object) override {
        if (dynamic_cast<Pelko::Path*>(object) && ++made > patience)
            throw GivenUp();
    }
    unsigned long made = 0;
};

using DelaysOfStage = std::function<std::pair<int, int>(unsigned stage)>;

void run(const char* kind, unsigned stages, unsigned long count, const DelaysOfStage& delaysOf) {
    Pelko::Model model("ladder");
    Pole* here = Pole::createInput(model.getCell());
    Pole* const start = here;
    for (unsigned stage = 0; stage < stages; ++stage) {
        Pole* first = Pole::create(model.getCell());
        Pole* second = Pole::create(model.getCell());
        Pole* join = Pole::create(model.getCell());
        const auto [firstDelay, secondDelay] = delaysOf(stage);
        Edge::create(here, first, Delay(firstDelay), Delay(firstDelay));
        Edge::create(here, second, Delay(secondDelay), Delay(secondDelay));
        Edge::create(first, join, Delay(1), Delay(1));
        Edge::create(second, join, Delay(1), Delay(1));
        here = join;
    }
    Pole* end = Pole::createOutput(model.getCell());
    Edge::create(here, end, Delay(1), Delay(1));
    auto* subdomain = Pelko::Subdomain::create(Pelko::Domain::create(nullptr, nullptr), {}, {});
    subdomain->captureLaunch(start);
    subdomain->captureLatch(end);
    subdomain->fixSetupRelation(Delay(1'000'000'000));
    Vorlen::Sweep* sweep = Vorlen::Sweep::create(subdomain);
    sweep->clockAnalyze();
    sweep->arrivalAnalyze();
    sweep->requireAnalyze();
    PathCounter counter;
    Pelko::Object::addListener(&counter);
    const bench::Stopwatch watch;
    const char* note = "";
    try {
        sweep->searchLongestPaths(Delay::getMaximum(), count);
    } catch (const GivenUp&) {
        note = "  given up";
    }
    const double seconds = watch.seconds();
    Pelko::Object::removeListener(&counter);
    std::printf("%-12s %6u stages, count %5lu: %10.4f s, %9lu paths made, %5lu kept%s\n", kind, stages, count,
                seconds, counter.made, subdomain->getLongestPaths().getCount(), note);
    std::fflush(stdout);
    sweep->destroy();
}

} // namespace

int main() {
    std::mt19937 random(5);
    for (const unsigned stages : {20U, 30U, 40U})
        for (const unsigned long count : {1UL, 10UL, 1'000UL}) {
            run("equal", stages, count, [](unsigned) { return std::pair(10, 10); });
            random.seed(5);
            run("random", stages, count, [&random](unsigned) {
                const int first = 1 + static_cast<int>(random() % 1'000);
                return std::pair(first, 1 + static_cast<int>(random() % 1'000));
            });
            // The later a stage, the smaller its difference, and the less critical way comes first: so paths
            // are found in ascending order.
            run("worst order", stages, count, [stages](unsigned stage) {
                const unsigned shift = std::min(stages - 1 - stage, 24U);
                return std::pair(1, 1 + (1 << shift));
            });
        }
    return 0;
}
