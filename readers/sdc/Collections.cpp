// Commands about lists of objects. A collection is a Tcl list, so that most of these are for files that use
// them.
#include "Filter.h"
#include "Objects.h"
#include "Session.h"

#include <algorithm>

namespace Readers::Sdc {

namespace {

constexpr Kinds anything = {ObjectKind::port, ObjectKind::pin, ObjectKind::cell, ObjectKind::net,
                            ObjectKind::clock};

Tcl_Obj* newText(std::string_view text) {
    return Tcl_NewStringObj(text.data(), static_cast<int>(text.size()));
}

void sizeofCollection(Session& session, Words words) {
    static const Syntax syntax{{}, {Takes::objects}};
    const Arguments arguments(syntax, words);
    session.tcl.setResult(Tcl_NewIntObj(static_cast<int>(elementsOf(arguments.argument(0)).size())));
}

// One name as it is, several as a list: a list of one would put braces around brackets.
void getObjectName(Session& session, Words words) {
    static const Syntax syntax{{}, {Takes::objects}};
    const Arguments arguments(syntax, words);
    const std::vector<Object> objects = session.resolve(arguments, "", arguments.argument(0), anything);
    if (objects.size() == 1) {
        session.tcl.setResult(newText(session.finder.name(objects.front())));
        return;
    }
    Tcl_Obj* const names = Tcl_NewListObj(0, nullptr);
    for (const Object& object : objects)
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
    const std::vector<Object> objects =
        session.resolve(arguments, "", arguments.argument(swapped ? 1 : 0), anything);
    std::vector<std::string> values;
    for (const Object& object : objects) {
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
    std::vector<Object> objects = session.resolve(arguments, "", arguments.argument(0), anything);
    for (const Object& object : session.resolve(arguments, "", arguments.argument(1), anything))
        objects.push_back(object);
    if (arguments.has("-unique"))
        removeDuplicates(objects);
    session.tcl.setResult(newCollection(objects));
}

// Like the one above, into a variable.
void appendToCollection(Session& session, Words words) {
    static const Syntax syntax{{{"-unique"}}, {Takes::name, Takes::objects}};
    const Arguments arguments(syntax, words);
    Tcl_Obj* const old = Tcl_ObjGetVar2(session.tcl.raw(), arguments.argument(0), nullptr, 0);
    std::vector<Object> objects;
    if (old != nullptr)
        objects = session.resolve(arguments, "", old, anything);
    for (const Object& object : session.resolve(arguments, "", arguments.argument(1), anything))
        objects.push_back(object);
    if (arguments.has("-unique"))
        removeDuplicates(objects);
    Tcl_Obj* const result = newCollection(objects);
    if (Tcl_ObjSetVar2(session.tcl.raw(), arguments.argument(0), nullptr, result, TCL_LEAVE_ERR_MSG) ==
        nullptr)
        throw CommandError(std::string(Tcl_GetStringResult(session.tcl.raw())));
    session.tcl.setResult(result);
}

void removeFromCollection(Session& session, Words words) {
    static const Syntax syntax{{}, {Takes::objects, Takes::objects}};
    const Arguments arguments(syntax, words);
    std::vector<Object> objects = session.resolve(arguments, "", arguments.argument(0), anything);
    std::vector<Object> gone = session.resolve(arguments, "", arguments.argument(1), anything);
    std::ranges::sort(gone);
    std::erase_if(objects,
                  [&gone](const Object& object) { return std::ranges::binary_search(gone, object); });
    session.tcl.setResult(newCollection(objects));
}

void filterCollection(Session& session, Words words) {
    static const Syntax syntax{{}, {Takes::objects, Takes::name}};
    const Arguments arguments(syntax, words);
    const Filter filter(Tcl_GetString(arguments.argument(1)));
    std::vector<Object> objects = session.resolve(arguments, "", arguments.argument(0), anything);
    std::erase_if(objects, [&](const Object& object) {
        return !filter.accepts(session.design, session.result.clocks, object);
    });
    session.tcl.setResult(newCollection(objects));
}

void indexCollection(Session& session, Words words) {
    static const Syntax syntax{{}, {Takes::objects, Takes::integer}};
    const Arguments arguments(syntax, words);
    const std::vector<Tcl_Obj*> elements = elementsOf(arguments.argument(0));
    const int index = arguments.integerArgument(1);
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
