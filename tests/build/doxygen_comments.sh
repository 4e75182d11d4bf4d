#!/usr/bin/env bash
# What cmake/doxygen_comments.awk makes of the comments of a header.
# Usage: doxygen_comments.sh SOURCE_ROOT
root=$(cd "$1" && pwd)
. "$(dirname "${BASH_SOURCE[0]}")/planted.sh"

cat > "$tree/Pole.h" <<'HEADER'
// A pole. See `a<b>` and <b>.
//
//   for (int i : x)
//
// More:
//   - one
#pragma once
#include <vector> // for all

namespace Pelko {

class Cell; // elsewhere

// Floats between declarations.

class PELKO_API Pole : public Object {
public:
    // --- Making -------------------------------------------
    // Makes one; "100 % @here".
    static Pole* create(Cell* owner); // never null
    enum Kind {
        Input = 1, // an input
                   // of the cell
        Output     // an output
    };

    // --- Reading
    // ------------
    bool is() const {
        // Why.
        return "}" != x; // because
    }

private:
    // The owner.
    Cell* cell_;
};

} // namespace Pelko
HEADER
cat > "$folder/expected" <<'HEADER'
/// \file
/// A pole. See `a<b>` and \<b\>.
///
///       for (int i : x)
///
/// More:
///   - one
#pragma once
#include <vector> // for all

namespace Pelko {

class Cell; ///< elsewhere

// Floats between declarations.

/// A pole. See `a<b>` and \<b\>.
///
///       for (int i : x)
///
/// More:
///   - one
class PELKO_API Pole : public Object {
public:
    /// \name Making
    ///@{
    /// Makes one; "100 \% \@here".
    static Pole* create(Cell* owner); ///< never null
    enum Kind {
        Input = 1, ///< an input
                   ///< of the cell
        Output     ///< an output
    };

    ///@}
    /// \name Reading
    ///@{
    bool is() const {
        // Why.
        return "}" != x; // because
    }

    ///@}
private:
    /// The owner.
    Cell* cell_;
};

} // namespace Pelko
HEADER
found=$(cd "$tree" && awk -f "$root/cmake/doxygen_comments.awk" Pole.h)
same "a header" "$(cat "$folder/expected")" "$found"
[ $failures -eq 0 ] || exit 1
