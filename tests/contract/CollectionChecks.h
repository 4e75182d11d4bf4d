// One row of the collection tables, and the checks that hold for a collection of any kind.
#pragma once

#include "Ruvex/Collections.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <vector>

namespace Contract {

template <class T>
struct CollectionRow {
    std::string name;
    Ruvex::Collection<T> collection;
    std::vector<T> expected; // in the order of the forward walk
    std::string label;
    T stranger; // not an element
};

template <class T>
std::vector<T> walk(Ruvex::Locator<T> locator) {
    std::vector<T> elements;
    for (; locator.isValid(); locator.progress())
        elements.push_back(locator.getCurrent());
    return elements;
}

template <class T>
std::vector<T> walk(const Ruvex::Collection<T>& collection) {
    std::vector<T> elements;
    for (T element : collection)
        elements.push_back(element);
    return elements;
}

template <class T>
std::vector<T> sorted(std::vector<T> elements) {
    std::sort(elements.begin(), elements.end());
    return elements;
}

// Count, emptiness, access, membership.
template <class T>
void checkQueries(const CollectionRow<T>& row) {
    const Ruvex::Collection<T>& c = row.collection;
    const std::vector<T>& e = row.expected;
    const unsigned long n = e.size();
    EXPECT_FALSE(c.isNull());
    EXPECT_EQ(c.getCount(), n);
    for (unsigned long i = 0; i <= n + 2; ++i)
        EXPECT_EQ(c.hasCount(i), i == n) << i;
    EXPECT_EQ(c.isEmpty(), n == 0);
    EXPECT_EQ(c.getFirst(), n == 0 ? T() : e.front());
    EXPECT_EQ(c.getLast(), n == 0 ? T() : e.back());
    for (unsigned long i = 0; i <= n + 2; ++i)
        EXPECT_EQ(c.getAt(i), i < n ? e[i] : T()) << i;
    for (const T& element : e)
        EXPECT_TRUE(c.contains(element));
    EXPECT_FALSE(c.contains(row.stranger));
    EXPECT_EQ(c._getLabel(), row.label);
}

// The three orders, and the state behind the last element.
template <class T>
void checkWalks(const CollectionRow<T>& row) {
    const std::vector<T> reversed(row.expected.rbegin(), row.expected.rend());
    EXPECT_EQ(walk(row.collection), row.expected);
    EXPECT_EQ(walk(row.collection.getLocator()), row.expected);
    EXPECT_EQ(walk(row.collection.getReverseLocator()), reversed);
    EXPECT_EQ(sorted(walk(row.collection.getRandomLocator())), sorted(row.expected));

    for (Ruvex::Locator<T> locator : {row.collection.getLocator(), row.collection.getReverseLocator(),
                                      row.collection.getRandomLocator()}) {
        while (locator.isValid())
            locator.progress();
        EXPECT_EQ(locator.getCurrent(), T());
        locator.progress();
        EXPECT_FALSE(locator.isValid());
        EXPECT_FALSE(locator._getLabel().empty());
    }
    if (const Ruvex::Memory<T> memory = row.collection.getMemory(); memory.isOffered) {
        std::vector<T> elements;
        std::copy_if(memory.begin, memory.end, std::back_inserter(elements),
                     [&](const T& element) { return !memory.holes || element != T(); });
        EXPECT_EQ(elements, row.expected);
    }
}

// A clone of a collection has the same elements. A clone of a locator continues at the same place,
// independently of the original.
template <class T>
void checkClones(const CollectionRow<T>& row) {
    {
        const Ruvex::Collection<T> clone = row.collection.getClone();
        Ruvex::Collection<T> assigned;
        assigned = clone;
        Ruvex::Collection<T> moved(std::move(assigned));
        EXPECT_EQ(walk(clone), row.expected);
        EXPECT_EQ(walk(moved), row.expected);
        EXPECT_EQ(moved._getLabel(), row.label);
        moved = Ruvex::Collection<T>();
        EXPECT_TRUE(moved.isNull());
        EXPECT_EQ(walk(clone.getLocator()), row.expected);
    }
    const auto check = [&row](Ruvex::Locator<T> locator, const std::vector<T>& order) {
        for (std::size_t i = 0; i <= order.size(); ++i, locator.progress()) {
            const std::vector<T> rest(order.begin() + static_cast<std::ptrdiff_t>(i), order.end());
            Ruvex::Locator<T> clone = locator.getClone();
            EXPECT_EQ(clone._getLabel(), locator._getLabel());
            EXPECT_EQ(walk(clone), rest);
            EXPECT_EQ(locator.isValid(), !rest.empty());
            EXPECT_EQ(locator.getCurrent(), rest.empty() ? T() : rest.front());
            Ruvex::Locator<T> assigned = row.collection.getReverseLocator();
            assigned = locator;
            EXPECT_EQ(walk(assigned), rest);
        }
    };
    check(row.collection.getLocator(), row.expected);
    check(row.collection.getReverseLocator(), std::vector<T>(row.expected.rbegin(), row.expected.rend()));
    const Ruvex::Locator<T> random = row.collection.getRandomLocator();
    check(random, walk(random));
}

template <class T>
void checkRow(const CollectionRow<T>& row) {
    SCOPED_TRACE(row.name);
    checkQueries(row);
    checkWalks(row);
    checkClones(row);
}

} // namespace Contract
