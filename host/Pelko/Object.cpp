#include "Pelko/Object.h"

#include "Pelko/Issue.h"
#include "Pelko/Tool.h"
#include "Pelko/detail/ModelEnd.h"
#include "Ruvex/Console.h"
#include "Ruvex/Record.h"
#include "Ruvex/Refusal.h"
#include "Ruvex/Utility.h"

#include <algorithm>
#include <cxxabi.h>
#include <memory>
#include <sstream>
#include <typeinfo>
#include <vector>

namespace Pelko {

namespace {

unsigned long lastStamp = 0;
Object::Keep* keeps = nullptr; // a list

// Listeners in the order of adding. Listeners may be added and removed while others are notified. A listener
// that is removed then leaves a hole until all have been notified, so that none is notified twice or skipped.
template <class Listener>
class Listeners {
public:
    void add(Listener* listener) {
        if (std::find(listeners_.begin(), listeners_.end(), listener) == listeners_.end())
            listeners_.push_back(listener);
    }
    void remove(Listener* listener) {
        const Telling telling(*this);
        std::replace(listeners_.begin(), listeners_.end(), listener, static_cast<Listener*>(nullptr));
    }
    template <class Tell>
    void tell(Tell tell) {
        if (listeners_.empty())
            return;
        const Telling telling(*this);
        for (std::size_t i = 0; i < listeners_.size(); ++i)
            if (listeners_[i])
                tell(*listeners_[i]);
    }

private:
    class Telling {
    public:
        explicit Telling(Listeners& owner) : owner_(owner) { ++owner_.tellings_; }
        Telling(const Telling&) = delete;
        Telling& operator=(const Telling&) = delete;
        ~Telling() {
            if (--owner_.tellings_ == 0)
                std::erase(owner_.listeners_, nullptr);
        }

    private:
        Listeners& owner_;
    };

    std::vector<Listener*> listeners_;
    unsigned tellings_ = 0;
};

Listeners<ObjectListener> listeners;
Listeners<SweepListener> sweepListeners;

} // namespace

ObjectListener::~ObjectListener() = default;

void ObjectListener::onCreated(Object*) {}

void ObjectListener::onDestroyed(Object*) {}

SweepListener::~SweepListener() = default;

Object::Object() : stamp_(++lastStamp) {}

Object::~Object() = default;

std::string Object::_getLabel() const { return getClass() + " " + getAlias(); }

Ruvex::Slot* Object::_getSlot() const { return new Ruvex::ObjectSlot<Object>(this); }

Ruvex::Record* Object::_getRecord() const { return _hasRecord() ? new Ruvex::Record(_getLabel()) : nullptr; }

bool Object::_hasRecord() const { return Ruvex::isDebug(); }

std::string Object::getClass() const {
    int status = 0;
    const std::unique_ptr<char, void (*)(void*)> name(
        abi::__cxa_demangle(typeid(*this).name(), nullptr, nullptr, &status), std::free);
    const std::string full = status == 0 ? name.get() : typeid(*this).name();
    return full.substr(full.rfind(':') == std::string::npos ? 0 : full.rfind(':') + 1);
}

std::string Object::getAlias() const { return "#" + std::to_string(stamp_); }

std::string Object::getReprLabel() const { return getAlias(); }

void Object::printDetails() const {
    Ruvex::console.print(_getLabel(), "");
    if (const std::unique_ptr<Ruvex::Record> record{_getRecord()}) {
        std::ostringstream text;
        record->print(text);
        Ruvex::console.print(text.str(), "");
    }
}

void Object::check(Issue&) const {}

Object::Keep::Keep(const Object* object) noexcept : object_(object), next_(keeps) {
    if (next_)
        next_->previous_ = this;
    keeps = this;
}

Object::Keep::~Keep() {
    (previous_ ? previous_->next_ : keeps) = next_;
    if (next_)
        next_->previous_ = previous_;
}

bool Object::isKept(const Object* object) {
    for (const Keep* keep = keeps; keep; keep = keep->next_)
        if (keep->object_ == object)
            return true;
    return false;
}

// While a model is destroyed, an exception of a listener is kept, and the others are notified.
void Object::notifyDestroyed(Object& object) {
    listeners.tell(
        [&](ObjectListener& listener) { detail::ModelEnd::guard([&] { listener.onDestroyed(&object); }); });
}

void Object::preDestroy() {
    notifyDestroyed(*this);
    sweepListeners.tell([this](SweepListener& listener) {
        detail::ModelEnd::guard([&] { listener.onSweepDestroyed(this); });
    });
}

void Object::destroy() {
    if (!isDestroyable())
        Ruvex::refuse<Ruvex::InvalidRequest>("Object", "destroy", 1, "Not destroyable: " + _getLabel());
    if (isKept(this) || Tool::Run::keeps(this))
        Ruvex::refuse<Ruvex::InvalidRequest>("Object", "destroy", 3, "Not destroyable now: " + _getLabel());
    {
        const Keep keep(this);
        preDestroy();
    }
    delete this;
}

void Object::postCreate() {
    const Keep keep(this);
    listeners.tell([this](ObjectListener& listener) { listener.onCreated(this); });
}

void Object::addListener(ObjectListener* listener) {
    Ruvex::require<Ruvex::InvalidRequest>(listener, "Object", "addListener", 2, "Null listener");
    listeners.add(listener);
}

void Object::removeListener(ObjectListener* listener) { listeners.remove(listener); }

void Object::addSweepListener(SweepListener* listener) {
    Ruvex::require<Ruvex::InvalidRequest>(listener, "Object", "addSweepListener", 4, "Null listener");
    sweepListeners.add(listener);
}

void Object::removeSweepListener(SweepListener* listener) { sweepListeners.remove(listener); }

void Object::endPart(Object& part) { part.preDestroy(); }

} // namespace Pelko
