// The destruction of a model in which listeners may throw: each listener is notified of each object, and the
// first exception is kept for whoever destroys the model.
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

    // Calls `action`. While a model is destroyed, its exception is kept, unless it is the cancellation of a
    // thread.
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
