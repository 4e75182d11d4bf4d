// A graph of named poles, from text: "a>b b>c" are two arcs, "a!b" is an inactive one. Poles and arcs come in
// the order of the text.
//
//   Support::Graph graph("s>m o>m m>t");
//   CPath::create(graph.objects({"s"}, {}, {"t"}));
//   tool->tagConstrainedPaths();
//   EXPECT_EQ(Support::tagged(), (Support::Names{"s -> m", "m -> t"}));
#pragma once

#include "tests/support/Builder.h"

#include <sstream>

namespace Support {

class Graph {
public:
    explicit Graph(const std::string& arcs) {
        std::istringstream words(arcs);
        for (std::string word; words >> word;) {
            const std::size_t place = word.find_first_of(">!");
            Pelko::Edge* edge = connect(word.substr(0, place), word.substr(place + 1));
            if (word[place] == '!')
                edge->disactivate();
        }
    }
    Pelko::Edge* connect(const std::string& source, const std::string& target) {
        Pelko::Pole* from = get(source);
        return design_.connect(from, get(target));
    }
    Pelko::Pole* get(const std::string& name) {
        Pelko::Pole*& pole = poles_[name];
        if (!pole)
            pole = design_.addPole(name);
        return pole;
    }
    Pelko::CPath::PoleList get(const Names& names) {
        Pelko::CPath::PoleList found;
        for (const std::string& name : names)
            found.push_back(get(name));
        return found;
    }
    Pelko::Edge* getEdge(const std::string& source, const std::string& target) {
        return get(target)->getIncomingEdge(get(source));
    }
    Pelko::CPath::Objects objects(const Names& sources, const Names& bridges, const Names& targets) {
        return {get(sources), get(targets), get(bridges)};
    }

private:
    Builder design_;
    std::map<std::string, Pelko::Pole*> poles_;
};

// The arcs that carry one of the classes.
inline Names tagged(unsigned long bits = ~0UL) {
    return namesOf(Pelko::cell->getEdges(),
                   [bits](const Pelko::Edge* edge) { return (edge->getPseudoMask().getBits() & bits) != 0; });
}

} // namespace Support
