// The end of a model, whatever listeners throw: each is told of each object, and the first exception is kept
// for whoever ended the model.
#pragma once

#include <cxxabi.h>
#include <exception>

namespace Pelko::detail {

class ModelEnd {
public:
    ModelEnd() : outer_(current_) { current_ = this; }
    ModelEnd(const ModelEnd&) = delete;
    ModelEnd& operator=(const ModelEnd&) = delete;
    ~ModelEnd() { current_ = outer_; }

    std::exception_ptr getFirst() const { return first_; }

    // Calls `action`. While a model ends, what it throws is kept, except the cancellation of a thread.
    template <class Action>
    static void guard(Action action) {
        if (!current_)
            return action();
        try {
            action();
        } catch (const abi::__forced_unwind&) {
            throw;
        } catch (...) {
            if (!current_->first_)
                current_->first_ = std::current_exception();
        }
    }

private:
    static inline ModelEnd* current_ = nullptr;

    ModelEnd* const outer_;
    std::exception_ptr first_;
};

} // namespace Pelko::detail
