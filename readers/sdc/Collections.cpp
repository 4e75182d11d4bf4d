// Commands about lists of objects. A collection is a Tcl list, so that most of these are for files that use
// them.
#include "readers/sdc/Filter.h"
#include "readers/sdc/Objects.h"
#include "readers/sdc/Session.h"

#include <algorithm>

namespace Readers::Sdc {

namespace {

constexpr Kinds anything = {Design::ObjectKind::port, Design::ObjectKind::pin, Design::ObjectKind::cell,
                            Design::ObjectKind::net, Design::ObjectKind::clock};

Tcl_Obj* newText(std::string_view text) {
    return Tcl_NewStringObj(text.data(), static_cast<int>(text.size()));
}

// Adds the objects that a value names after a list of handles.
void appendTo(Tcl_Obj* list, const std::vector<Design::Object>& objects) {
    for (const Design::Object& object : objects)
        Tcl_ListObjAppendElement(nullptr, list, newHandle(object));
}

// A few objects, or many, among which others are looked for.
class Set {
public:
    explicit Set(std::vector<Design::Object> objects) : sorted_(std::move(objects)) {
        std::ranges::sort(sorted_);
    }

    // The place of what a value stands for; the size if it is none of them.
    std::size_t find(Tcl_Obj* value) const {
        constexpr std::size_t few = 4;
        const std::optional<Design::Object> object = toObject(value);
        if (!object)
            return sorted_.size();
        const auto known = sorted_.size() <= few ? std::ranges::find(sorted_, *object)
                                                 : std::ranges::lower_bound(sorted_, *object);
        return known == sorted_.end() || *known != *object
                   ? sorted_.size()
                   : static_cast<std::size_t>(known - sorted_.begin());
    }
    std::size_t find(const Design::Object& object) const {
        return static_cast<std::size_t>(std::ranges::lower_bound(sorted_, object) - sorted_.begin());
    }
    std::size_t size() const { return sorted_.size(); }

private:
    std::vector<Design::Object> sorted_;
};

// Those that the list does not have, each once.
std::vector<Design::Object> missingIn(Tcl_Obj* list, std::vector<Design::Object> objects) {
    removeDuplicates(objects);
    const Set set(objects);
    std::vector<bool> has(set.size() + 1);
    for (Tcl_Obj* const element : elementsOf(list))
        has[set.find(element)] = true;
    std::erase_if(objects, [&](const Design::Object& object) { return has[set.find(object)]; });
    return objects;
}

void sizeofCollection(Session& session, Words words) {
    static const Syntax syntax{{}, {Takes::objects}};
    const Arguments arguments(syntax, words);
    int size = 0;
    if (!isCollection(arguments.argument(0)) ||
        Tcl_ListObjLength(nullptr, arguments.argument(0), &size) != TCL_OK)
        size = static_cast<int>(elementsOf(arguments.argument(0)).size());
    session.tcl.setResult(Tcl_NewIntObj(size));
}

// One name as it is, several as a list: a list of one would put braces around brackets.
void getObjectName(Session& session, Words words) {
    static const Syntax syntax{{}, {Takes::objects}};
    const Arguments arguments(syntax, words);
    const std::vector<Design::Object> objects =
        session.resolve(arguments, "", arguments.argument(0), anything);
    if (objects.size() == 1) {
        session.tcl.setResult(newText(session.finder.name(objects.front())));
        return;
    }
    Tcl_Obj* const names = Tcl_NewListObj(0, nullptr);
    for (const Design::Object& object : objects)
        Tcl_ListObjAppendElement(nullptr, names, newText(session.finder.name(object)));
    session.tcl.setResult(names);
}

// The object first or the attribute first: both are in use.
void getAttribute(Session& session, Words words) {
    static const Syntax syntax{{{"-quiet"}, {"-object_type", Takes::name}, {"-class", Takes::name}},
                               {Takes::objects, Takes::objects}};
    const Arguments arguments(syntax, words);
    const bool swapped = !elementsOf(arguments.argument(1)).empty() &&
                         session.finder.toKnown(elementsOf(arguments.argument(1)).front()).has_value();
    const std::string name = Tcl_GetString(arguments.argument(swapped ? 0 : 1));
    const std::vector<Design::Object> objects =
        session.resolve(arguments, "", arguments.argument(swapped ? 1 : 0), anything);
    std::vector<std::string> values;
    for (const Design::Object& object : objects) {
        const auto value = attribute(session.design, session.result.clocks, object, name);
        if (!value && !arguments.has("-quiet"))
            arguments.fail("a " + std::string(kindName(object.kind)) + " has no attribute '" + name + "'");
        values.push_back(value.value_or(""));
    }
    if (values.size() == 1) {
        session.tcl.setResult(newText(values.front()));
        return;
    }
    Tcl_Obj* const list = Tcl_NewListObj(0, nullptr);
    for (const std::string& value : values)
        Tcl_ListObjAppendElement(nullptr, list, newText(value));
    session.tcl.setResult(list);
}

void addToCollection(Session& session, Words words) {
    static const Syntax syntax{{{"-unique"}}, {Takes::objects, Takes::objects}};
    const Arguments arguments(syntax, words);
    // A script may do this for each of many objects: the handles of the first are shared, not made anew.
    Tcl_Obj* const base =
        isCollection(arguments.argument(0)) && !arguments.has("-unique")
            ? Tcl_DuplicateObj(arguments.argument(0))
            : newCollection(session.resolve(arguments, "", arguments.argument(0), anything));
    std::vector<Design::Object> more = session.resolve(arguments, "", arguments.argument(1), anything);
    appendTo(base, arguments.has("-unique") ? missingIn(base, std::move(more)) : more);
    session.tcl.setResult(base);
}

// Like the one above, into a variable, at the cost of what is added. With -unique it is that of the whole.
void appendToCollection(Session& session, Words words) {
    static const Syntax syntax{{{"-unique"}}, {Takes::name, Takes::objects}};
    const Arguments arguments(syntax, words);
    Tcl_Obj* const old = Tcl_ObjGetVar2(session.tcl.raw(), arguments.argument(0), nullptr, 0);
    std::vector<Design::Object> more = session.resolve(arguments, "", arguments.argument(1), anything);
    const bool unique = arguments.has("-unique");
    Tcl_Obj* result = old;
    if (old == nullptr || !isCollection(old) || (unique && !session.isKnownUnique(old)))
        result = newCollection(old == nullptr ? std::vector<Design::Object>()
                                              : session.resolve(arguments, "", old, anything));
    else if (Tcl_IsShared(old))
        result = Tcl_DuplicateObj(old);
    appendTo(result, unique ? missingIn(result, std::move(more)) : more);
    if (unique)
        session.noteUnique(result);
    if (Tcl_ObjSetVar2(session.tcl.raw(), arguments.argument(0), nullptr, result, TCL_LEAVE_ERR_MSG) ==
        nullptr)
        throw CommandError(std::string(Tcl_GetStringResult(session.tcl.raw())));
    session.tcl.setResult(result);
}

void removeFromCollection(Session& session, Words words) {
    static const Syntax syntax{{}, {Takes::objects, Takes::objects}};
    const Arguments arguments(syntax, words);
    const Set gone(session.resolve(arguments, "", arguments.argument(1), anything));
    Tcl_Obj* const base =
        isCollection(arguments.argument(0))
            ? arguments.argument(0)
            : newCollection(session.resolve(arguments, "", arguments.argument(0), anything));
    Tcl_IncrRefCount(base);
    std::vector<Tcl_Obj*> left = elementsOf(base);
    std::erase_if(left, [&](Tcl_Obj* element) { return gone.find(element) != gone.size(); });
    session.tcl.setResult(Tcl_NewListObj(static_cast<int>(left.size()), left.data()));
    Tcl_DecrRefCount(base);
}

void filterCollection(Session& session, Words words) {
    static const Syntax syntax{{}, {Takes::objects, Takes::name}};
    const Arguments arguments(syntax, words);
    const Filter filter(Tcl_GetString(arguments.argument(1)));
    std::vector<Design::Object> objects = session.resolve(arguments, "", arguments.argument(0), anything);
    std::erase_if(objects, [&](const Design::Object& object) {
        return !filter.accepts(session.design, session.result.clocks, object);
    });
    session.tcl.setResult(newCollection(objects));
}

void indexCollection(Session& session, Words words) {
    static const Syntax syntax{{}, {Takes::objects, Takes::integer}};
    const Arguments arguments(syntax, words);
    const int index = arguments.integerArgument(1);
    Tcl_Obj* element = nullptr;
    if (index >= 0 && isCollection(arguments.argument(0)) &&
        Tcl_ListObjIndex(nullptr, arguments.argument(0), index, &element) == TCL_OK && element != nullptr) {
        session.tcl.setResult(element);
        return;
    }
    const std::vector<Tcl_Obj*> elements = elementsOf(arguments.argument(0));
    if (index < 0 || static_cast<std::size_t>(index) >= elements.size())
        arguments.failValue("", "an index below " + std::to_string(elements.size()), arguments.argument(1));
    session.tcl.setResult(elements[static_cast<std::size_t>(index)]);
}

void copyCollection(Session& session, Words words) {
    static const Syntax syntax{{}, {Takes::objects}};
    const Arguments arguments(syntax, words);
    session.tcl.setResult(arguments.argument(0));
}

} // namespace

void addCollectionCommands(Session& session) {
    session.tcl.alias("foreach_in_collection", "foreach");
    session.add("sizeof_collection", sizeofCollection);
    session.add("get_object_name", getObjectName);
    session.add("get_name", getObjectName);
    session.add("query_objects", getObjectName);
    session.add("get_attribute", getAttribute);
    session.add("get_property", getAttribute);
    session.add("add_to_collection", addToCollection);
    session.add("append_to_collection", appendToCollection);
    session.add("remove_from_collection", removeFromCollection);
    session.add("filter_collection", filterCollection);
    session.add("index_collection", indexCollection);
    session.add("copy_collection", copyCollection);
}

} // namespace Readers::Sdc
