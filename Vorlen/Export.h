// Visibility of the library's three classes: everything else in it stays hidden.
#pragma once

#define VORLEN_API __attribute__((visibility("default")))
