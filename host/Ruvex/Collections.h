// The kinds of collection: adapters of a container, and adapters of another collection.
//
//   memory       an array elsewhere
//   vector       a vector that the collection owns
//   list         a std::list
//   set          a std::set; `contains` is logarithmic
//   map          the values of a std::map
//   key          the keys of a std::map; `contains` is logarithmic
//   append       the elements of one collection, then those of another
//   tail         all elements except the first
//   from         the elements from the first one that equals a given element; empty if there is none
//   type         the elements of a base-class collection that have a given dynamic type
//   filter       the elements for which a predicate is true
//   collect-one  one element
//   reverse      the elements from the last to the first
//   random       the elements in a random order, which each walk draws anew
//
// Adapters of a container read the live container. Adapters of collections hold clones of them.
#pragma once

#include "Ruvex/Collection.h"

#include <list>
#include <map>
#include <set>

namespace Ruvex {

namespace detail {

struct ReadElement {
    auto operator()(auto iterator) const { return *iterator; }
};
struct ReadKey {
    auto operator()(auto iterator) const { return iterator->first; }
};
struct ReadValue {
    auto operator()(auto iterator) const { return iterator->second; }
};

// The common part of list, set, map and key: a container, and how its iterator is read.
template <class T, class Container, class Read, class Derived>
class ContainerDriver : public DriverOf<CollectionDriver<T>, Derived> {
public:
    explicit ContainerDriver(const Container& container) : container_(&container) {}

    Locator<T> getLocator() const override {
        return IteratorLocator<T, typename Container::const_iterator, Read>(container_->begin(),
                                                                            container_->end());
    }
    Locator<T> getReverseLocator() const override {
        return IteratorLocator<T, typename Container::const_reverse_iterator, Read>(container_->rbegin(),
                                                                                    container_->rend());
    }
    unsigned long getCount() const override { return container_->size(); }
    bool hasCount(unsigned long n) const override { return container_->size() == n; }
    bool isEmpty() const override { return container_->empty(); }
    T getLast() const override { return container_->empty() ? T() : T(Read()(std::prev(container_->end()))); }

protected:
    const Container& getContainer() const { return *container_; }

private:
    const Container* container_;
};

} // namespace detail

template <class T>
class ListCollection final
    : public detail::ContainerDriver<T, std::list<T>, detail::ReadElement, ListCollection<T>> {
public:
    using detail::ContainerDriver<T, std::list<T>, detail::ReadElement, ListCollection<T>>::ContainerDriver;
    std::string _getLabel() const override { return "List collection"; }
};

template <class T, class Less = std::less<T>>
class SetCollection final
    : public detail::ContainerDriver<T, std::set<T, Less>, detail::ReadElement, SetCollection<T, Less>> {
public:
    using detail::ContainerDriver<T, std::set<T, Less>, detail::ReadElement,
                                  SetCollection<T, Less>>::ContainerDriver;
    bool contains(const T& element) const override { return this->getContainer().count(element) != 0; }
    std::string _getLabel() const override { return "Set collection"; }
};

template <class K, class V, class Less = std::less<K>>
class MapCollection final
    : public detail::ContainerDriver<V, std::map<K, V, Less>, detail::ReadValue, MapCollection<K, V, Less>> {
public:
    using detail::ContainerDriver<V, std::map<K, V, Less>, detail::ReadValue,
                                  MapCollection<K, V, Less>>::ContainerDriver;
    std::string _getLabel() const override { return "Map collection"; }
};

template <class K, class V, class Less = std::less<K>>
class KeyCollection final
    : public detail::ContainerDriver<K, std::map<K, V, Less>, detail::ReadKey, KeyCollection<K, V, Less>> {
public:
    using detail::ContainerDriver<K, std::map<K, V, Less>, detail::ReadKey,
                                  KeyCollection<K, V, Less>>::ContainerDriver;
    bool contains(const K& key) const override { return this->getContainer().count(key) != 0; }
    std::string _getLabel() const override { return "Key collection"; }
};

// An array elsewhere. If it has holes (pointers only), null elements are skipped, also those that become null
// during a walk, and `count` is the number of the other elements.
template <class T>
class MemoryCollection final : public DriverOf<CollectionDriver<T>, MemoryCollection<T>> {
public:
    MemoryCollection(const T* begin, const T* end)
        : memory_{begin, end, false, true}, count_(static_cast<unsigned long>(end - begin)) {}
    MemoryCollection(const T* begin, const T* end, unsigned long count)
        : memory_{begin, end, true, true}, count_(count) {}

    Locator<T> getLocator() const override { return Cursor(memory_); }
    Memory<T> getMemory() const override { return memory_; }
    unsigned long getCount() const override { return count_; }
    bool hasCount(unsigned long n) const override { return count_ == n; }
    bool isEmpty() const override { return count_ == 0; }
    T getLast() const override {
        const T* last = memory_.end;
        while (last != memory_.begin)
            if (--last; !isHole(*last))
                return *last;
        return T();
    }
    T getAt(unsigned long index) const override {
        if (static_cast<unsigned long>(memory_.end - memory_.begin) != count_)
            return CollectionDriver<T>::getAt(index);
        return index < count_ ? memory_.begin[index] : T();
    }
    std::string _getLabel() const override { return "Memory collection"; }

private:
    bool isHole(const T& element) const {
        if constexpr (std::is_pointer_v<T>)
            return memory_.holes && !element;
        else
            return false;
    }

    class Cursor final : public DriverOf<LocatorDriver<T>, Cursor> {
    public:
        explicit Cursor(const Memory<T>& memory) : memory_(memory) { skip(); }
        bool isValid() const override { return memory_.begin != memory_.end; }
        T getCurrent() const override { return isValid() ? *memory_.begin : T(); }
        void progress() override {
            if (!isValid())
                return;
            ++memory_.begin;
            skip();
        }
        std::string _getLabel() const override { return "Memory locator"; }

    private:
        void skip() {
            if constexpr (std::is_pointer_v<T>)
                while (memory_.holes && isValid() && !*memory_.begin)
                    ++memory_.begin;
        }

        Memory<T> memory_;
    };

    Memory<T> memory_;
    unsigned long count_;
};

// A vector that the collection owns, for elements that were gathered for one answer.
template <class T>
class VectorCollection final : public DriverOf<CollectionDriver<T>, VectorCollection<T>> {
public:
    explicit VectorCollection(std::vector<T> elements) : elements_(std::move(elements)) {}

    Locator<T> getLocator() const override { return view().getLocator(); }
    Memory<T> getMemory() const override { return view().getMemory(); }
    unsigned long getCount() const override { return elements_.size(); }
    bool hasCount(unsigned long n) const override { return elements_.size() == n; }
    bool isEmpty() const override { return elements_.empty(); }
    T getLast() const override { return view().getLast(); }
    T getAt(unsigned long index) const override { return view().getAt(index); }
    std::string _getLabel() const override { return "Vector collection"; }

private:
    MemoryCollection<T> view() const { return {elements_.data(), elements_.data() + elements_.size()}; }

    std::vector<T> elements_;
};

template <class T>
class AppendCollection final : public DriverOf<CollectionDriver<T>, AppendCollection<T>> {
public:
    AppendCollection(const Collection<T>& first, const Collection<T>& second)
        : first_(first), second_(second) {}

    Locator<T> getLocator() const override { return Cursor(first_.getLocator(), second_.getLocator()); }
    unsigned long getCount() const override { return first_.getCount() + second_.getCount(); }
    bool isEmpty() const override { return first_.isEmpty() && second_.isEmpty(); }
    T getLast() const override { return second_.isEmpty() ? first_.getLast() : second_.getLast(); }
    bool contains(const T& element) const override {
        return first_.contains(element) || second_.contains(element);
    }
    std::string _getLabel() const override { return "Append collection"; }

private:
    class Cursor final : public DriverOf<LocatorDriver<T>, Cursor> {
    public:
        Cursor(const Locator<T>& first, const Locator<T>& second) : first_(first), second_(second) {}
        bool isValid() const override { return first_.isValid() || second_.isValid(); }
        T getCurrent() const override {
            return first_.isValid() ? first_.getCurrent() : second_.getCurrent();
        }
        void progress() override { first_.isValid() ? first_.progress() : second_.progress(); }
        std::string _getLabel() const override { return "Append locator"; }

    private:
        Locator<T> first_;
        Locator<T> second_;
    };

    Collection<T> first_;
    Collection<T> second_;
};

template <class T>
class TailCollection final : public DriverOf<CollectionDriver<T>, TailCollection<T>> {
public:
    explicit TailCollection(const Collection<T>& whole) : whole_(whole) {}

    Locator<T> getLocator() const override {
        Locator<T> locator = whole_.getLocator();
        locator.progress();
        return locator;
    }
    Memory<T> getMemory() const override {
        Memory<T> memory = whole_.getMemory();
        if (!memory.isOffered || memory.begin == memory.end)
            return memory;
        if constexpr (std::is_pointer_v<T>)
            while (memory.holes && !*memory.begin && memory.begin + 1 != memory.end)
                ++memory.begin;
        ++memory.begin;
        return memory;
    }
    unsigned long getCount() const override {
        const unsigned long count = whole_.getCount();
        return count == 0 ? 0 : count - 1;
    }
    std::string _getLabel() const override { return "Tail collection"; }

private:
    Collection<T> whole_;
};

template <class T>
class FromCollection final : public DriverOf<CollectionDriver<T>, FromCollection<T>> {
public:
    FromCollection(const Collection<T>& whole, const T& element) : whole_(whole), element_(element) {}

    Locator<T> getLocator() const override {
        Locator<T> locator = whole_.getLocator();
        while (locator.isValid() && !(locator.getCurrent() == element_))
            locator.progress();
        return locator;
    }
    std::string _getLabel() const override { return "From collection"; }

private:
    Collection<T> whole_;
    T element_;
};

// The elements of a collection of `Base` for which `choose.takes(element)` is true, as
// `choose.read(element)`.
template <class T, class Base, class Choose>
class ChoiceLocator final : public DriverOf<LocatorDriver<T>, ChoiceLocator<T, Base, Choose>> {
public:
    ChoiceLocator(const Locator<Base>& locator, const Choose& choose) : locator_(locator), choose_(choose) {
        skip();
    }

    bool isValid() const override { return locator_.isValid(); }
    T getCurrent() const override { return isValid() ? choose_.read(locator_.getCurrent()) : T(); }
    void progress() override {
        locator_.progress();
        skip();
    }
    std::string _getLabel() const override { return "Choice locator"; }

private:
    void skip() {
        while (locator_.isValid() && !choose_.takes(locator_.getCurrent()))
            locator_.progress();
    }

    Locator<Base> locator_;
    Choose choose_;
};

// T and Base are pointer types; the class of T is derived from that of Base.
template <class T, class Base>
class TypeCollection final : public DriverOf<CollectionDriver<T>, TypeCollection<T, Base>> {
public:
    explicit TypeCollection(const Collection<Base>& whole) : whole_(whole) {}

    Locator<T> getLocator() const override {
        return ChoiceLocator<T, Base, Choose>(whole_.getLocator(), Choose());
    }
    std::string _getLabel() const override { return "Type collection"; }

private:
    struct Choose {
        bool takes(Base element) const { return dynamic_cast<T>(element) != nullptr; }
        T read(Base element) const { return dynamic_cast<T>(element); }
    };

    Collection<Base> whole_;
};

// `Predicate` is a copyable function object from an element to bool.
template <class T, class Predicate>
class FilterCollection final : public DriverOf<CollectionDriver<T>, FilterCollection<T, Predicate>> {
public:
    FilterCollection(const Collection<T>& whole, const Predicate& predicate)
        : whole_(whole), choose_{predicate} {}

    Locator<T> getLocator() const override {
        return ChoiceLocator<T, T, Choose>(whole_.getLocator(), choose_);
    }
    std::string _getLabel() const override { return "Filter collection"; }

private:
    struct Choose {
        Predicate predicate;
        bool takes(const T& element) const { return predicate(element); }
        T read(const T& element) const { return element; }
    };

    Collection<T> whole_;
    Choose choose_;
};

template <class T>
class CollectOneCollection final : public DriverOf<CollectionDriver<T>, CollectOneCollection<T>> {
public:
    explicit CollectOneCollection(const T& element) : element_(element) {}

    Locator<T> getLocator() const override { return OrderLocator<T>({element_}); }
    unsigned long getCount() const override { return 1; }
    std::string _getLabel() const override { return "Collect-one collection"; }

private:
    T element_;
};

template <class T>
class ReverseCollection final : public DriverOf<CollectionDriver<T>, ReverseCollection<T>> {
public:
    explicit ReverseCollection(const Collection<T>& whole) : whole_(whole) {}

    Locator<T> getLocator() const override { return whole_.getReverseLocator(); }
    Locator<T> getReverseLocator() const override { return whole_.getLocator(); }
    unsigned long getCount() const override { return whole_.getCount(); }
    bool contains(const T& element) const override { return whole_.contains(element); }
    std::string _getLabel() const override { return "Reverse collection"; }

private:
    Collection<T> whole_;
};

template <class T>
class RandomCollection final : public DriverOf<CollectionDriver<T>, RandomCollection<T>> {
public:
    explicit RandomCollection(const Collection<T>& whole) : whole_(whole) {}

    Locator<T> getLocator() const override { return whole_.getRandomLocator(); }
    unsigned long getCount() const override { return whole_.getCount(); }
    bool contains(const T& element) const override { return whole_.contains(element); }
    std::string _getLabel() const override { return "Random collection"; }

private:
    Collection<T> whole_;
};

// The controller behind the framework's iteration statement, which is a range-for in another notation:
// `RUVEX_FOR_EACH(Pole*, pole, cell->getPoles()) { … }`. The body may break out of it.
template <class T>
class ForEachControler {
public:
    explicit ForEachControler(const Collection<T>& collection)
        : collection_(collection), locator_(collection_.getLocator()) {}

    bool isValid() const { return locator_.isValid(); }
    T getCurrent() const { return locator_.getCurrent(); }
    void progress() { locator_.progress(); }

private:
    Collection<T> collection_;
    Locator<T> locator_;
};

#define RUVEX_FOR_EACH(Type, name, collection)                                                               \
    for (Ruvex::ForEachControler<Type> name##Controler(collection); name##Controler.isValid();               \
         name##Controler.progress())                                                                         \
        if (Type name = name##Controler.getCurrent(); true)

} // namespace Ruvex
