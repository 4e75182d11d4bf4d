// A reported path: a chain of arcs from a launch leaf to an end point of one subdomain, and its slack.
//
// The slack is computed once, when the path is made, by the arithmetic of the sweep:
//   arrival   launch, plus the input constraint of the first pole (where the launch side has a root), plus
//   the arcs' delays required  the setup relation (longest) or minus the hold relation (shortest) plus latch,
//   minus the output constraint of the
//             last pole (where the latch side has a root)
//   longest   required - arrival + adjust
//   shortest  arrival - required + adjust; the last arc's hold value counts against the data where it is a
//   check arc
//
// The path belongs to its subdomain, and keeps its arcs from being destroyed. Cost: a word an arc.
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
    // The worst slack first, by the order of raw values; the first come first among equals.
    struct Worse {
        bool operator()(const Path* a, const Path* b) const {
            return a->slack_ == b->slack_ ? a->getStamp() < b->getStamp() : a->slack_ < b->slack_;
        }
    };

    // `latch` and `launch` are the clock arrivals at either end, `adjust` what an exception adds to the
    // slack. FactoryFailed: "Null subdomain", "Null edge", "Broken path" (an arc that does not start where
    // the one before ends).
    static Path* createLongest(Subdomain* subdomain, const Edges& edges, const Delay& latch,
                               const Delay& launch, const Delay& adjust);
    static Path* createShortest(Subdomain* subdomain, const Edges& edges, const Delay& latch,
                                const Delay& launch, const Delay& adjust);

    Subdomain* getSubdomain() const { return subdomain_; }
    bool isLongest() const { return longest_; }
    Edges getEdges() const {
        return Ruvex::MemoryCollection<Edge*>(edges_.data(), edges_.data() + edges_.size());
    }
    const Delay& getSlack() const { return slack_; }
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
