// Constrained paths: the timing exceptions. Each is a set of source poles, of target poles, and of bridges
// between them.
//
// Exceptions belong to the analyzer, in order of creation, and keep their poles from being destroyed.
// `setPseudoMask` gives an exception its class, and shows the class on its sources (opening) and its targets
// (closing).
//
// The slack adjustment says how an exception changes the slack of a path in one subdomain, relative to the
// relation that the subdomain has. It is never undefined, so that a path is always made:
//
//   kind               long side                            short side
//   maximum delay v    v - setup relation                   0
//   minimum delay v    0                                    -v - hold relation
//   multicycle n       (n - 1) latch periods                -(n - 1) latch periods: hold follows setup
//   false path         maximum                              maximum
//   other              0                                    0
//
// and 0 where what it is relative to is not defined. An application that knows a better one gives the
// exception an adjuster.
#pragma once

#include "Pelko/Delay.h"
#include "Pelko/Edges.h"
#include "Pelko/Object.h"
#include "Pelko/PseudoMask.h"

#include <functional>
#include <vector>

namespace Pelko {

class Analyzer;
class Subdomain;

class PELKO_API CPath : public Object {
public:
    using PoleList = std::vector<Pole*>;
    using Adjuster = std::function<Delay(const Subdomain& subdomain, bool longest)>;

    // The objects of an exception. A pole named twice counts once.
    struct Objects {
        PoleList sources;
        PoleList targets;
        PoleList bridges = {};
    };

    // An exception of no kind: it has a class and tags arcs. FactoryFailed, here and in the kinds: "Null
    // analyzer", "Null pole".
    static CPath* create(const Objects& objects);

    Poles getSources() const { return viewOf(sources_); }
    Poles getTargets() const { return viewOf(targets_); }
    // Intermediate points, empty when none.
    Poles getBridges() const { return viewOf(bridges_); }
    // Sources, bridges and targets, one after another.
    Poles getPoles() const;

    // Whether the poles are cut out of timing propagation instead of being tagged.
    virtual bool isInsulated() const { return false; }
    // Says that the exception names paths that exist.
    void validate() { validated_ = true; }
    bool isValidated() const { return validated_; }

    const PseudoMask& getPseudoMask() const { return pseudoMask_; }
    void setPseudoMask(const PseudoMask& mask);

    // The worst slack of the paths under the exception; an undefined slack is passed over.
    void mergeLongestSlack(const Delay& slack) { merge(longestSlack_, slack); }
    void mergeShortestSlack(const Delay& slack) { merge(shortestSlack_, slack); }
    // Undefined where no path was found.
    const Delay& getLongestSlack() const { return longestSlack_; }
    const Delay& getShortestSlack() const { return shortestSlack_; }

    // What the exception adds to a slack. `longest`: the setup side.
    Delay getSlackAdjustment(const Subdomain* subdomain, bool longest) const;
    void setAdjuster(Adjuster adjuster) { adjuster_ = std::move(adjuster); }

    // Forgets class, slacks and validation.
    void clearResults();

    // False while a reported path is governed by the exception.
    bool isDestroyable() const override { return references_ == 0; }

    void setAlias(const std::string& alias) { alias_ = alias; }
    std::string getClass() const override;
    // The alias set, else the class and the stamp.
    std::string getAlias() const override;
    Ruvex::Record* _getRecord() const override;

protected:
    explicit CPath(const Objects& objects);
    static void preCreate(const Objects& objects);
    void postCreate();
    void preDestroy() override;
    virtual Delay calculateAdjustment(const Subdomain& subdomain, bool longest) const;
    const Analyzer& getAnalyzer() const { return *analyzer_; }

private:
    friend class Path;

    void showClass() const;

    static Poles viewOf(const PoleList& poles) {
        return Ruvex::MemoryCollection<Pole*>(poles.data(), poles.data() + poles.size());
    }
    static void merge(Delay& worst, const Delay& slack) {
        if (slack.isDefined() && (!worst.isDefined() || slack < worst))
            worst = slack;
    }

    Analyzer* analyzer_; // that the exception was made for
    PoleList sources_;
    PoleList targets_;
    PoleList bridges_;
    PseudoMask pseudoMask_;
    bool validated_ = false;
    Delay longestSlack_ = Delay::getUndefined();
    Delay shortestSlack_ = Delay::getUndefined();
    Adjuster adjuster_;
    std::string alias_;
    unsigned long references_ = 0; // reported paths
};

// A false path. An insulated one is cut out of the graph before a run.
class PELKO_API FPath : public CPath {
public:
    static FPath* create(const Objects& objects, bool insulated = false);

    bool isInsulated() const override { return insulated_; }
    std::string getClass() const override;

protected:
    FPath(const Objects& objects, bool insulated) : CPath(objects), insulated_(insulated) {}
    Delay calculateAdjustment(const Subdomain& subdomain, bool longest) const override;

private:
    bool insulated_;
};

// A maximum or minimum delay path: one delay, and which of the two it is. FactoryFailed also: "Special
// delay".
class PELKO_API DPath : public CPath {
public:
    static DPath* createMaximum(const Objects& objects, const Delay& delay) {
        return create(objects, delay, true);
    }
    static DPath* createMinimum(const Objects& objects, const Delay& delay) {
        return create(objects, delay, false);
    }

    bool isMaximum() const { return maximum_; }
    // The delay, where the path holds such a constraint. InvalidRequest otherwise: "Invalid maxdelay",
    // "Invalid mindelay".
    const Delay& getMaxdelay() const;
    const Delay& getMindelay() const;
    std::string getClass() const override;
    Ruvex::Record* _getRecord() const override;

protected:
    DPath(const Objects& objects, const Delay& delay, bool maximum)
        : CPath(objects), delay_(delay), maximum_(maximum) {}
    Delay calculateAdjustment(const Subdomain& subdomain, bool longest) const override;

private:
    static DPath* create(const Objects& objects, const Delay& delay, bool maximum);

    Delay delay_;
    bool maximum_;
};

// A multicycle path. FactoryFailed also: "Zero multiplier".
class PELKO_API MPath : public CPath {
public:
    static MPath* create(const Objects& objects, unsigned long multiplier);

    unsigned long getMultiplier() const { return multiplier_; }
    std::string getClass() const override;
    Ruvex::Record* _getRecord() const override;

protected:
    MPath(const Objects& objects, unsigned long multiplier) : CPath(objects), multiplier_(multiplier) {}
    Delay calculateAdjustment(const Subdomain& subdomain, bool longest) const override;

private:
    unsigned long multiplier_;
};

} // namespace Pelko
