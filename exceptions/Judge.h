// Which exceptions govern a path, and what they require of it. Each key (Key.h) is judged once, when its
// first path arrives: the matcher finds the exceptions that cover it (Matcher.h), the precedence decides
// between them (Govern.h), and the accounts note what became of each (Accounts.h).
//
// After that a path costs the hash of its key. The memory grows with the keys that occur.
#pragma once

#include "exceptions/Accounts.h"
#include "exceptions/Govern.h"
#include "exceptions/Matcher.h"

#include <unordered_map>

namespace Exceptions {

class Judge {
public:
    // Refers to all of them as long as it lives.
    Judge(const Design::Constraints& constraints, const Model::Clocks& clocks, int scale,
          const Variants& variants, const Encoding& encoding, Accounts& accounts);

    // What holds for the paths of a key. Valid as long as the judge lives.
    const Requirement& requirement(const Key& key);

private:
    Requirement judge(const Key& key);

    const Design::Constraints& constraints_;
    const Model::Clocks& clocks_;
    const int scale_;
    Matcher matcher_;
    Accounts& accounts_;
    std::unordered_map<Key, Requirement, KeyHash> known_;
};

} // namespace Exceptions
