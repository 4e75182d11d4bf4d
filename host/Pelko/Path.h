// A reported path: a chain of arcs from a launch leaf to an end point of one subdomain, and its slack.
//
// The slack is computed once, when the path is created, by the arithmetic of the sweep:
//
//   arrival  = launch + input constraint of the first pole + the arcs' delays
//   required = setup relation + latch - output constraint of the last pole     (longest)
//            = -hold relation + latch - output constraint of the last pole     (shortest)
//   slack    = required - arrival + adjust                                     (longest)
//            = arrival - required + adjust                                     (shortest)
//
// A port constraint counts only if its side has a clock root. A longest path takes maximum delays and bounds,
// a shortest path minimum ones. The minimum delay of an arc into a check is a hold value, which a shortest
// path subtracts from the arrival.
//
// The path belongs to its subdomain, and keeps its arcs and its exception from being destroyed. Space: 8
// bytes per arc and a fixed part. Creating or destroying one costs a step for each arc and the logarithm of
// the number of kept paths.
#pragma once

#include "Pelko/Delay.h"
#include "Pelko/Edges.h"
#include "Pelko/Object.h"

#include <list>
#include <vector>

namespace Pelko {

class CPath;
class Subdomain;

class PELKO_API Path : public Object {
public:
    // Orders paths by slack, the worst first, by raw values (undefined is the worst). Equal slacks are
    // ordered by creation.
    struct Worse {
        bool operator()(const Path* a, const Path* b) const {
            return a->slack_ == b->slack_ ? a->getStamp() < b->getStamp() : a->slack_ < b->slack_;
        }
    };

    // `latch` and `launch` are the clock arrivals at the two ends. `adjust` is what an exception adds to the
    // slack. FactoryFailed: "Null subdomain", "Null edge", "Broken path" (an arc that does not start at the
    // target of the one before).
    static Path* createLongest(Subdomain* subdomain, const Edges& edges, const Delay& latch,
                               const Delay& launch, const Delay& adjust);
    static Path* createShortest(Subdomain* subdomain, const Edges& edges, const Delay& latch,
                                const Delay& launch, const Delay& adjust);

    Subdomain* getSubdomain() const { return subdomain_; }
    // True for a longest (setup) path, false for a shortest (hold) path.
    bool isLongest() const { return longest_; }
    // The arcs, from the launch leaf to the end point.
    Edges getEdges() const {
        return Ruvex::MemoryCollection<Edge*>(edges_.data(), edges_.data() + edges_.size());
    }
    const Delay& getSlack() const { return slack_; }
    // The arguments of the factory.
    const Delay& getLatchDelay() const { return latch_; }
    const Delay& getLaunchDelay() const { return launch_; }
    const Delay& getAdjustment() const { return adjust_; }
    // The exception that governs the path, or null.
    CPath* getConstrainedPath() const { return constrainedPath_; }
    void setConstrainedPath(CPath* path);

    std::string getClass() const override;
    // "start -> end", or the subdomain's name for a path without arcs.
    std::string getAlias() const override;
    Ruvex::Record* _getRecord() const override;

protected:
    void preDestroy() override;

private:
    Path(Subdomain* subdomain, bool longest, std::vector<Edge*> edges, const Delay& latch,
         const Delay& launch, const Delay& adjust);
    static Path* create(Subdomain* subdomain, bool longest, const Edges& edges, const Delay& latch,
                        const Delay& launch, const Delay& adjust);
    Delay calculateSlack() const;

    Subdomain* subdomain_;
    bool longest_;
    std::vector<Edge*> edges_;
    Delay latch_;
    Delay launch_;
    Delay adjust_;
    Delay slack_;
    CPath* constrainedPath_ = nullptr;
};

} // namespace Pelko
