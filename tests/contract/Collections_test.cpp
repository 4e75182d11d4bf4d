// Collections of every kind: which elements they hold and in which order, with none, one and several
// elements.
#include "CollectionChecks.h"

#include <memory>

namespace Contract {

namespace {

using namespace Ruvex;
using Numbers = std::vector<int>;

// Containers that outlive the collections over them.
struct Containers {
    std::list<int> list0, list1{7}, list3{30, 10, 20};
    std::set<int> set0, set1{7}, set3{30, 10, 20};
    std::set<int, std::greater<int>> down3{30, 10, 20};
    std::map<int, int> map0, map1{{1, 7}}, map3{{3, 30}, {1, 10}, {2, 20}};
    Numbers vector0, vector1{7}, vector3{30, 10, 20};

    Collection<int> list(int n) const { return ListCollection<int>(n == 0 ? list0 : n == 1 ? list1 : list3); }
    MemoryCollection<int> memory(const Numbers& v) const { return {v.data(), v.data() + v.size()}; }
};

const Containers& containers() {
    static const Containers instance;
    return instance;
}

std::vector<CollectionRow<int>> containerRows() {
    const Containers& c = containers();
    return {
        {"list of none", ListCollection<int>(c.list0), {}, "List collection", 99},
        {"list of one", ListCollection<int>(c.list1), {7}, "List collection", 99},
        {"list", ListCollection<int>(c.list3), {30, 10, 20}, "List collection", 99},
        {"set of none", SetCollection<int>(c.set0), {}, "Set collection", 99},
        {"set of one", SetCollection<int>(c.set1), {7}, "Set collection", 99},
        {"set", SetCollection<int>(c.set3), {10, 20, 30}, "Set collection", 99},
        {"set downwards", SetCollection<int, std::greater<int>>(c.down3), {30, 20, 10}, "Set collection", 99},
        {"map of none", MapCollection<int, int>(c.map0), {}, "Map collection", 1},
        {"map of one", MapCollection<int, int>(c.map1), {7}, "Map collection", 1},
        {"map", MapCollection<int, int>(c.map3), {10, 20, 30}, "Map collection", 1},
        {"key of none", KeyCollection<int, int>(c.map0), {}, "Key collection", 10},
        {"key of one", KeyCollection<int, int>(c.map1), {1}, "Key collection", 7},
        {"key", KeyCollection<int, int>(c.map3), {1, 2, 3}, "Key collection", 10},
        {"memory of none", c.memory(c.vector0), {}, "Memory collection", 99},
        {"memory of one", c.memory(c.vector1), {7}, "Memory collection", 99},
        {"memory", c.memory(c.vector3), {30, 10, 20}, "Memory collection", 99},
        {"vector of none", VectorCollection<int>({}), {}, "Vector collection", 99},
        {"vector of one", VectorCollection<int>({7}), {7}, "Vector collection", 99},
        {"vector", VectorCollection<int>({30, 10, 20}), {30, 10, 20}, "Vector collection", 99},
        {"vector with repeats", VectorCollection<int>({5, 5, 5}), {5, 5, 5}, "Vector collection", 99},
    };
}

using Append = AppendCollection<int>;
using Tail = TailCollection<int>;
using From = FromCollection<int>;
using Reverse = ReverseCollection<int>;

// An adapter of an adapter of its own kind is made from a collection: made directly, it would be a copy.
std::vector<CollectionRow<int>> adapterRows() {
    const Containers& c = containers();
    const Collection<int> none = c.list(0), one = c.list(1), three = c.list(3), null{};
    const Collection<int> keys = KeyCollection<int, int>(c.map3);
    const Collection<int> array = c.memory(c.vector3);
    const auto even = [](int number) { return number % 4 == 0; };
    using Even = FilterCollection<int, decltype(even)>;
    return {
        {"append none, none", Append(none, none), {}, "Append collection", 99},
        {"append none, three", Append(none, three), {30, 10, 20}, "Append collection", 99},
        {"append three, none", Append(three, none), {30, 10, 20}, "Append collection", 99},
        {"append one, three", Append(one, three), {7, 30, 10, 20}, "Append collection", 99},
        {"append null, three", Append(null, three), {30, 10, 20}, "Append collection", 99},
        {"append three, null", Append(three, null), {30, 10, 20}, "Append collection", 99},
        {"append nested",
         Append(Append(one, keys), Append(none, one)),
         {7, 1, 2, 3, 7},
         "Append collection",
         99},
        {"tail of null", Tail(null), {}, "Tail collection", 99},
        {"tail of none", Tail(none), {}, "Tail collection", 99},
        {"tail of one", Tail(one), {}, "Tail collection", 7},
        {"tail of three", Tail(three), {10, 20}, "Tail collection", 30},
        {"tail of an array", Tail(array), {10, 20}, "Tail collection", 30},
        {"tail of an empty array", Tail(c.memory(c.vector0)), {}, "Tail collection", 30},
        {"tail of a tail", Tail(Collection<int>(Tail(array))), {20}, "Tail collection", 10},
        {"from the first", From(three, 30), {30, 10, 20}, "From collection", 99},
        {"from the second", From(three, 10), {10, 20}, "From collection", 30},
        {"from the last", From(three, 20), {20}, "From collection", 10},
        {"from a stranger", From(three, 99), {}, "From collection", 30},
        {"from, in none", From(none, 7), {}, "From collection", 7},
        {"from, in null", From(null, 7), {}, "From collection", 7},
        {"filter", Even(Append(one, three), even), {20}, "Filter collection", 30},
        {"filter of null", Even(null, even), {}, "Filter collection", 30},
        {"collect one", CollectOneCollection<int>(42), {42}, "Collect-one collection", 99},
        {"reverse of null", Reverse(null), {}, "Reverse collection", 99},
        {"reverse of none", Reverse(none), {}, "Reverse collection", 99},
        {"reverse of three", Reverse(three), {20, 10, 30}, "Reverse collection", 99},
        {"reverse of a tail", Reverse(Tail(array)), {20, 10}, "Reverse collection", 30},
        {"reverse of an append", Reverse(Append(one, three)), {20, 10, 30, 7}, "Reverse collection", 99},
        {"reverse twice", Reverse(Collection<int>(Reverse(array))), {30, 10, 20}, "Reverse collection", 99},
    };
}

TEST(Collections, OverContainers) {
    for (const auto& row : containerRows())
        checkRow(row);
}

TEST(Collections, OverCollections) {
    for (const auto& row : adapterRows())
        checkRow(row);
}

// --- Pointers: holes in memory, and dynamic types ---

struct Shape {
    virtual ~Shape() = default;
};
struct Circle : Shape {};
struct Square : Shape {};
struct Disc : Circle {};

TEST(Collections, MemoryWithHoles) {
    Shape shapes[3];
    Shape *const a = &shapes[0], *const b = &shapes[1], *const stranger = &shapes[2];
    using Row = std::vector<Shape*>;
    struct {
        Row array;
        Row expected;
    } const rows[] = {
        {{}, {}},
        {{nullptr}, {}},
        {{nullptr, nullptr, nullptr}, {}},
        {{a}, {a}},
        {{nullptr, a}, {a}},
        {{a, nullptr}, {a}},
        {{a, nullptr, b}, {a, b}},
        {{nullptr, nullptr, a, nullptr, nullptr, b, nullptr}, {a, b}},
        {{a, b}, {a, b}},
    };
    for (const auto& [array, expected] : rows) {
        SCOPED_TRACE(expected.size());
        const Collection<Shape*> holed =
            MemoryCollection<Shape*>(array.data(), array.data() + array.size(), expected.size());
        const Row tail(expected.empty() ? expected.end() : expected.begin() + 1, expected.end());
        const Row reversed(expected.rbegin(), expected.rend());
        Row twice = expected;
        twice.insert(twice.end(), expected.begin(), expected.end());
        checkRow<Shape*>({"holes", holed, expected, "Memory collection", stranger});
        checkRow<Shape*>({"tail", TailCollection<Shape*>(holed), tail, "Tail collection", stranger});
        checkRow<Shape*>(
            {"reverse", ReverseCollection<Shape*>(holed), reversed, "Reverse collection", stranger});
        checkRow<Shape*>(
            {"append", AppendCollection<Shape*>(holed, holed), twice, "Append collection", stranger});
    }
}

TEST(Collections, ByDynamicType) {
    Circle circle;
    Square square;
    Disc disc;
    Circle otherCircle;
    const std::vector<Shape*> shapes{&square, &circle, &disc, &square};
    const Collection<Shape*> all = MemoryCollection<Shape*>(shapes.data(), shapes.data() + shapes.size());
    const auto circles = [](const Collection<Shape*>& whole) {
        return TypeCollection<Circle*, Shape*>(whole);
    };
    const std::vector<CollectionRow<Circle*>> rows{
        {"circles", circles(all), {&circle, &disc}, "Type collection", &otherCircle},
        {"circles of none",
         circles(MemoryCollection<Shape*>(nullptr, nullptr)),
         {},
         "Type collection",
         &circle},
        {"circles of null", circles({}), {}, "Type collection", &circle},
        {"circles of squares",
         circles(CollectOneCollection<Shape*>(&square)),
         {},
         "Type collection",
         &circle},
        {"circles of a null pointer",
         circles(CollectOneCollection<Shape*>(nullptr)),
         {},
         "Type collection",
         &circle},
        {"reverse",
         ReverseCollection<Circle*>(circles(all)),
         {&disc, &circle},
         "Reverse collection",
         &otherCircle},
    };
    for (const auto& row : rows)
        checkRow(row);
    EXPECT_EQ(walk<Disc*>(TypeCollection<Disc*, Shape*>(all)), std::vector<Disc*>{&disc});
    EXPECT_EQ(walk<Square*>(TypeCollection<Square*, Shape*>(all)), (std::vector<Square*>{&square, &square}));
}

// --- Random order ---

TEST(Collections, RandomHoldsTheSameElements) {
    const Containers& c = containers();
    struct {
        Collection<int> whole;
        Numbers sortedElements;
    } const rows[] = {{{}, {}}, {c.list(0), {}}, {c.list(1), {7}}, {c.list(3), {10, 20, 30}}};
    for (const auto& [whole, elements] : rows) {
        SCOPED_TRACE(elements.size());
        const Collection<int> random = RandomCollection<int>(whole);
        EXPECT_EQ(random.getCount(), elements.size());
        EXPECT_EQ(random.isEmpty(), elements.empty());
        EXPECT_TRUE(random.hasCount(elements.size()));
        EXPECT_FALSE(random.hasCount(elements.size() + 1));
        for (int element : elements)
            EXPECT_TRUE(random.contains(element));
        EXPECT_FALSE(random.contains(99));
        EXPECT_EQ(sorted(walk(random)), elements);
        EXPECT_EQ(sorted(walk(random.getReverseLocator())), elements);
        EXPECT_EQ(sorted(walk(random.getRandomLocator())), elements);
        EXPECT_EQ(random._getLabel(), "Random collection");
        EXPECT_EQ(walk(random.getClone()).size(), elements.size());
    }
}

// The same seed has the same order. In the long run all orders are equally frequent: 6 orders of 3 elements,
// 6000 draws, each within 1000 +- 150 (five standard deviations).
TEST(Collections, RandomOrderFollowsTheSeed) {
    const Collection<int> random = RandomCollection<int>(containers().list(3));
    const auto draw = [&random](unsigned long seed) {
        setRandomSeed(seed);
        Numbers order;
        for (int i = 0; i < 20; ++i) {
            const Numbers once = walk(random);
            order.insert(order.end(), once.begin(), once.end());
        }
        return order;
    };
    EXPECT_EQ(draw(getDefaultSeed()), draw(getDefaultSeed()));
    EXPECT_EQ(draw(1), draw(1));
    EXPECT_NE(draw(1), draw(2));

    setRandomSeed(getDefaultSeed());
    std::map<Numbers, int> frequency;
    for (int i = 0; i < 6000; ++i)
        ++frequency[walk(random)];
    EXPECT_EQ(frequency.size(), 6u);
    for (const auto& [order, count] : frequency)
        EXPECT_NEAR(count, 1000, 150);
}

// --- Null, views and drivers ---

TEST(Collections, Null) {
    const Collection<int> null{};
    EXPECT_TRUE(null.isNull());
    EXPECT_TRUE(null.isEmpty());
    EXPECT_EQ(null.getCount(), 0u);
    EXPECT_TRUE(null.hasCount(0));
    EXPECT_FALSE(null.hasCount(1));
    EXPECT_EQ(null.getFirst(), 0);
    EXPECT_EQ(null.getLast(), 0);
    EXPECT_EQ(null.getAt(0), 0);
    EXPECT_FALSE(null.contains(0));
    EXPECT_EQ(null._getLabel(), "null");
    EXPECT_EQ(walk(null), Numbers{});
    EXPECT_TRUE(null.getClone().isNull());
    for (Locator<int> locator :
         {Locator<int>(), null.getLocator(), null.getReverseLocator(), null.getRandomLocator()}) {
        EXPECT_FALSE(locator.isValid());
        EXPECT_EQ(locator.getCurrent(), 0);
        locator.progress();
        EXPECT_FALSE(locator.getClone().isValid());
        EXPECT_EQ(locator._getLabel(), "null");
    }
}

TEST(Collections, AreViewsOfTheLiveContainer) {
    std::list<int> list{1};
    std::map<int, int> map{{1, 10}};
    const Collection<int> ofList = ListCollection<int>(list);
    const Collection<int> ofValues = MapCollection<int, int>(map);
    const Collection<int> ofKeys = KeyCollection<int, int>(map);
    const Collection<int> copy = ofList;
    Numbers gathered{1};
    const Collection<int> own = VectorCollection<int>(gathered);
    list.push_back(2);
    map[2] = 20;
    gathered.push_back(2);
    EXPECT_EQ(walk(ofList), (Numbers{1, 2}));
    EXPECT_EQ(walk(copy), (Numbers{1, 2}));
    EXPECT_EQ(walk(ofValues), (Numbers{10, 20}));
    EXPECT_EQ(walk(ofKeys), (Numbers{1, 2}));
    EXPECT_EQ(walk(own), Numbers{1});
}

// An element that a walk has passed may be removed from the list.
TEST(Collections, ListElementsMayGoBehindTheWalk) {
    std::list<int> list{1, 2, 3, 4};
    Numbers seen;
    for (Locator<int> locator = Collection<int>(ListCollection<int>(list)).getLocator(); locator.isValid();) {
        seen.push_back(locator.getCurrent());
        locator.progress();
        list.pop_front();
    }
    EXPECT_EQ(seen, (Numbers{1, 2, 3, 4}));
    EXPECT_TRUE(list.empty());
}

TEST(Collections, DriversCloneThemselves) {
    const Containers& c = containers();
    const ListCollection<int> small(c.list3);
    const AppendCollection<int> large(c.list(1), c.list(3));
    const std::unique_ptr<CollectionDriver<int>> ofSmall(small.getClone()), ofLarge(large.getClone());
    EXPECT_EQ(walk(ofSmall->getLocator()), (Numbers{30, 10, 20}));
    EXPECT_EQ(walk(ofLarge->getLocator()), (Numbers{7, 30, 10, 20}));
    EXPECT_EQ(ofSmall->_getLabel(), small._getLabel());
    EXPECT_EQ(ofLarge->getCount(), 4u);

    OrderLocator<int> locator({1, 2, 3});
    locator.progress();
    const std::unique_ptr<LocatorDriver<int>> clone(locator.getClone());
    locator.progress();
    EXPECT_EQ(clone->getCurrent(), 2);
    EXPECT_EQ(locator.getCurrent(), 3);
}

TEST(Collections, TakeEachOthersPlace) {
    const Containers& c = containers();
    const Collection<int> values[] = {Collection<int>(), c.list(3), Append(c.list(1), c.list(3)),
                                      VectorCollection<int>({1, 2})};
    for (const Collection<int>& from : values)
        for (const Collection<int>& to : values) {
            Collection<int> held = to;
            held = from;
            EXPECT_EQ(walk(held), walk(from));
            Collection<int> moved = to;
            moved = Collection<int>(from);
            EXPECT_EQ(walk(moved), walk(from));
            const Collection<int>& self = moved;
            moved = self;
            EXPECT_EQ(walk(moved), walk(from));
            EXPECT_EQ(moved.isNull(), from.isNull());
        }
}

// --- The iteration statement ---

TEST(Collections, IterationStatement) {
    const Containers& c = containers();
    const Collection<int> keys = KeyCollection<int, int>(c.map3), null{};
    Numbers all, untilTwo, uneven;
    RUVEX_FOR_EACH(int, number, c.list(3))
    all.push_back(number);
    RUVEX_FOR_EACH(int, number, keys) {
        if (number == 2)
            break;
        untilTwo.push_back(number);
    }
    RUVEX_FOR_EACH(int, number, keys) {
        if (number == 2)
            continue;
        uneven.push_back(number);
    }
    RUVEX_FOR_EACH(int, number, null)
    FAIL() << number;
    EXPECT_EQ(all, (Numbers{30, 10, 20}));
    EXPECT_EQ(untilTwo, Numbers{1});
    EXPECT_EQ(uneven, (Numbers{1, 3}));

    ForEachControler<int> controler(c.list(1));
    EXPECT_TRUE(controler.isValid());
    EXPECT_EQ(controler.getCurrent(), 7);
    controler.progress();
    EXPECT_FALSE(controler.isValid());
    EXPECT_EQ(controler.getCurrent(), 0);
}

} // namespace

} // namespace Contract
