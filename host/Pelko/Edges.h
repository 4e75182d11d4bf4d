// The database's collections of poles and of edges.
#pragma once

#include "Ruvex/Collections.h"

namespace Pelko {

class Edge;
class Pole;

using Poles = Ruvex::Collection<Pole*>;
using Edges = Ruvex::Collection<Edge*>;

} // namespace Pelko
