// Constrained paths: the timing exceptions. Each has a set of source poles, a set of target poles, and a set
// of bridges between them.
//
// Exceptions belong to the analyzer, in order of creation, and keep their poles from being destroyed.
// `setPseudoMask` gives an exception its class, and adds the class to the opening masks of its sources and to
// the closing masks of its targets.
//
// The slack adjustment is what an exception adds to the slack of a path in one subdomain, relative to the
// relation of the subdomain. It is never undefined, so that a path is always created:
//
//   kind               long side                            short side
//   maximum delay v    v - setup relation                   0
//   minimum delay v    0                                    -v - hold relation
//   multicycle n       (n - 1) latch periods                -(n - 1) latch periods: hold follows setup
//   false path         maximum                              maximum
//   other              0                                    0
//
// If the relation or the period in this table is undefined, the adjustment is 0. An application that knows
// the exact value gives the exception an adjuster.
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

    // The poles of an exception. A pole that is named twice counts once.
    struct Objects {
        PoleList sources;
        PoleList targets;
        PoleList bridges = {};
    };

    // An exception of no kind: it has a class and tags arcs. FactoryFailed, also for the kinds below: "Null
    // analyzer", "Null pole".
    static CPath* create(const Objects& objects);

    Poles getSources() const { return viewOf(sources_); }
    Poles getTargets() const { return viewOf(targets_); }
    // The intermediate points: each path under the exception passes one. Empty if paths need not.
    Poles getBridges() const { return viewOf(bridges_); }
    // Sources, bridges and targets, one after another.
    Poles getPoles() const;

    // Whether a run makes all arcs of the poles inactive instead of tagging paths.
    virtual bool isInsulated() const { return false; }
    // Marks the exception as valid: at least one path under it exists.
    void validate() { validated_ = true; }
    bool isValidated() const { return validated_; }

    // The class of the exception; empty until set.
    const PseudoMask& getPseudoMask() const { return pseudoMask_; }
    // Replaces the class, here and in the masks of the poles. Costs a step for each of its poles; if it had
    // another class, also for each exception.
    void setPseudoMask(const PseudoMask& mask);

    // Keep the worst slack of the paths under the exception. An undefined slack is ignored.
    void mergeLongestSlack(const Delay& slack) { merge(longestSlack_, slack); }
    void mergeShortestSlack(const Delay& slack) { merge(shortestSlack_, slack); }
    // The worst slack, undefined if no path was found.
    const Delay& getLongestSlack() const { return longestSlack_; }
    const Delay& getShortestSlack() const { return shortestSlack_; }

    // What the exception adds to the slack of a path: on the setup side if `longest`, else on the hold side.
    // InvalidRequest: "Null subdomain".
    Delay getSlackAdjustment(const Subdomain* subdomain, bool longest) const;
    // The adjuster's result replaces the table above. An empty adjuster restores it.
    void setAdjuster(Adjuster adjuster) { adjuster_ = std::move(adjuster); }

    // Clears class, slacks and validation.
    void clearResults();

    // False while the exception governs a reported path.
    bool isDestroyable() const override { return references_ == 0; }

    void setAlias(const std::string& alias) { alias_ = alias; }
    std::string getClass() const override;
    // The alias that was set, else the class, "#" and the stamp.
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

    Analyzer* analyzer_; // the owner
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

// A false path. If it is insulated, a run makes all arcs of its poles inactive.
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

// A maximum delay path or a minimum delay path. FactoryFailed: "Special delay".
class PELKO_API DPath : public CPath {
public:
    static DPath* createMaximum(const Objects& objects, const Delay& delay) {
        return create(objects, delay, true);
    }
    static DPath* createMinimum(const Objects& objects, const Delay& delay) {
        return create(objects, delay, false);
    }

    bool isMaximum() const { return maximum_; }
    // The delay of a maximum delay path. InvalidRequest for a minimum delay path: "Invalid maxdelay".
    const Delay& getMaxdelay() const;
    // The delay of a minimum delay path. InvalidRequest for a maximum delay path: "Invalid mindelay".
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

// A multicycle path. FactoryFailed: "Zero multiplier".
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
