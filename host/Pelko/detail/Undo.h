// Undoes a step if a later one throws: the destructor calls the action, unless `release()` was called.
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
    // The later steps have succeeded: the action is not called.
    void release() { armed_ = false; }

private:
    Action action_;
    bool armed_ = true;
};

} // namespace Pelko::detail
