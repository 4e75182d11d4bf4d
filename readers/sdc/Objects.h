// Handles: how ports, pins, cells, nets and clocks travel through a script.
//
// A collection is a Tcl list of handles, so that every list command works on it. A handle is a Tcl value that
// holds kind and index; its text ("@pin:17") is made only if a script asks for it, and can be read
// again.
#pragma once

#include "design/Constraints.h"

#include <tcl.h>

#include <optional>
#include <string_view>
#include <vector>

namespace Readers::Sdc {

std::string_view kindName(Design::ObjectKind kind);

Tcl_Obj* newHandle(Design::Object object);
Tcl_Obj* newCollection(const std::vector<Design::Object>& objects);

// Returns the object that a handle stands for; nothing for other values. Indices are not checked.
std::optional<Design::Object> toObject(Tcl_Obj* value);

// Whether it is a handle, or a list that begins with one. Does not make the value's text, which may be long.
bool holdsHandles(Tcl_Obj* value);

// A list that begins with a handle, as queries return it.
bool isCollection(Tcl_Obj* value);

// The elements of a list of handles, names or patterns. One word without spaces is one element, whatever
// brackets and backslashes it has; so is a text that is no list. Valid as long as the value is not changed.
std::vector<Tcl_Obj*> elementsOf(Tcl_Obj* value);

} // namespace Readers::Sdc
