// Visibility of the host's classes: everything else in a host library stays hidden.
#pragma once

#define RUVEX_API __attribute__((visibility("default")))
#define PELKO_API __attribute__((visibility("default")))
