#include "Pelko/Cell.h"

#include "Pelko/Edge.h"
#include "Pelko/Module.h"
#include "Pelko/Pin.h"
#include "Pelko/detail/Undo.h"
#include "Ruvex/Refusal.h"

namespace Pelko {

Cell* cell = nullptr;

Cell::Cell(const std::string& name) : name_(name), module_(new Module(this, name)) {}

Cell::~Cell() = default;

Cell* Cell::create(const std::string& name) {
    Ruvex::require<Ruvex::FactoryFailed>(!name.empty(), "Cell", "create", 1, "Empty cell name");
    auto* created = new Cell(name);
    created->postCreate();
    return created;
}

Pole* Cell::getMainPole(const Pin* pin) const { return pin ? pin->getMainPole() : nullptr; }

Poles Cell::getAuxiliaryPoles(const Pin* pin) const { return pin ? pin->getAuxiliaryPoles() : Poles(); }

void Cell::reserve(std::size_t poles, std::size_t edges) {
    poles_.getObjects().reserve(poles);
    edges_.getObjects().reserve(edges);
    edgeDetails_.reserve(edges);
}

void Cell::add(Pole* pole, const std::string& name) {
    const std::uint32_t index = poles_.getBound();
    if (!name.empty())
        names_.emplace(index, name);
    detail::Undo forgetName([&] { names_.erase(index); });
    pole->index_ = poles_.add(pole);
    forgetName.release();
}

std::uint32_t Cell::add(Edge* edge) {
    edgeDetails_.resize(edges_.getBound() + std::size_t{1});
    return edges_.add(edge);
}

void Cell::remove(Pole* pole) {
    poles_.remove(pole->index_);
    if (!names_.empty())
        names_.erase(pole->index_);
}

const std::string* Cell::findName(const Pole* pole) const {
    if (names_.empty())
        return nullptr;
    const auto found = names_.find(pole->index_);
    return found == names_.end() ? nullptr : &found->second;
}

std::string Cell::getClass() const { return "Cell"; }

bool Cell::isDestroyable() const { return analyzers_ == 0; }

// Without an analyzer, only poles of the cell refer to its poles, and all of them are destroyed together.
void Cell::preDestroy() {
    notifyDestroyed(*this);
    for (Edge* edge : getEdges())
        edge->destroy();
    for (Pole* pole : getPoles()) {
        pole->setClockPole(nullptr);
        pole->setMainPole(nullptr);
    }
    for (Pole* pole : getPoles())
        pole->destroy();
    endPart(*module_);
    if (Pelko::cell == this)
        Pelko::cell = nullptr;
}

} // namespace Pelko
