// The cell: the design under analysis, and the owner of its poles and edges. The global `cell` is the one
// that tools work on.
//
// Poles and edges have dense indices in order of creation, and collections return them in that order. The
// index of a destroyed object is never used again, so that an index always means the same object.
// `getPoleBound()` and `getEdgeBound()` are the sizes of tables by index.
#pragma once

#include "Pelko/Edges.h"
#include "Pelko/Object.h"

#include <cstdint>
#include <memory>
#include <unordered_map>
#include <vector>

namespace Pelko {

class Module;
class Pin;

namespace detail {

// The part of an arc that is seldom read.
struct EdgeDetails {
    unsigned long weight = 0;
    std::uint32_t sourcePosition = 0; // in the source's outgoing fan
    std::uint32_t targetPosition = 0; // in the target's incoming fan
    std::uint32_t references = 0;     // reported paths
};

} // namespace detail

class PELKO_API Cell : public Object {
public:
    // A cell with an empty module of the same name. FactoryFailed: "Empty cell name".
    static Cell* create(const std::string& name);

    const std::string& getName() const { return name_; }
    Module* getModule() const { return module_.get(); }
    // All poles and all arcs, in order of creation. The count is O(1).
    Poles getPoles() const { return poles_.getView(); }
    Edges getEdges() const { return edges_.getView(); }
    // The main pole of the pin; null if the pin is null or has none.
    Pole* getMainPole(const Pin* pin) const;
    // The check poles that a clock pin governs. Empty if the pin is null or has none.
    Poles getAuxiliaryPoles(const Pin* pin) const;

    // One more than the largest index so far.
    std::uint32_t getPoleBound() const { return poles_.getBound(); }
    std::uint32_t getEdgeBound() const { return edges_.getBound(); }
    // Reserves memory for these numbers of poles and arcs.
    void reserve(std::size_t poles, std::size_t edges);

    std::string getClass() const override;
    std::string getAlias() const override { return name_; }
    // False while an analyzer works on the cell.
    bool isDestroyable() const override;

    ~Cell() override;

protected:
    explicit Cell(const std::string& name);
    void preDestroy() override;

private:
    friend class Analyzer;
    friend class Edge;
    friend class Pole;

    // Objects by index; null in the place of a destroyed one.
    template <class T>
    class Table {
    public:
        std::uint32_t add(T* object) {
            objects_.push_back(object);
            ++live_;
            return static_cast<std::uint32_t>(objects_.size() - 1);
        }
        void remove(std::uint32_t index) {
            objects_[index] = nullptr;
            --live_;
        }
        Ruvex::Collection<T*> getView() const {
            return Ruvex::MemoryCollection<T*>(objects_.data(), objects_.data() + objects_.size(), live_);
        }
        std::uint32_t getBound() const { return static_cast<std::uint32_t>(objects_.size()); }
        std::vector<T*>& getObjects() { return objects_; }

    private:
        std::vector<T*> objects_;
        std::uint32_t live_ = 0;
    };

    void add(Pole* pole, const std::string& name);
    std::uint32_t add(Edge* edge);
    void remove(Pole* pole);
    const std::string* findName(const Pole* pole) const;

    std::string name_;
    std::unique_ptr<Module> module_;
    Table<Pole> poles_;
    Table<Edge> edges_;
    std::vector<detail::EdgeDetails> edgeDetails_;         // by index
    std::unordered_map<std::uint32_t, std::string> names_; // of the poles that have one, by index
    unsigned analyzers_ = 0;
};

extern PELKO_API Cell* cell;

} // namespace Pelko
