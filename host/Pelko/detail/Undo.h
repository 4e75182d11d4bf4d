// Takes a step back where what comes after it throws.
#pragma once

#include <utility>

namespace Pelko::detail {

template <class Action>
class Undo {
public:
    explicit Undo(Action action) : action_(std::move(action)) {}
    Undo(const Undo&) = delete;
    Undo& operator=(const Undo&) = delete;
    ~Undo() {
        if (armed_)
            action_();
    }
    // All went well.
    void release() { armed_ = false; }

private:
    Action action_;
    bool armed_ = true;
};

} // namespace Pelko::detail
