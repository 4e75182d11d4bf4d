// The findings of a consistency check: a list of texts, each with the object that it is about.
#pragma once

#include "Ruvex/Export.h"

#include <string>
#include <vector>

namespace Pelko {

class Object;

class PELKO_API Issue {
public:
    struct Finding {
        const Object* object;
        std::string text;
    };

    void add(const Object* object, const std::string& text) { findings_.push_back({object, text}); }
    const std::vector<Finding>& getFindings() const { return findings_; }
    bool isEmpty() const { return findings_.empty(); }

private:
    std::vector<Finding> findings_;
};

} // namespace Pelko
