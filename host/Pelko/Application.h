// The application: how a run yields to the program around it. Tools use the global `application`.
//
// In batch mode a run processes no events. Otherwise it calls QCoreApplication::processEvents() when the
// event timer shows more than 250 ms. If a stop was requested, the run then ends with Ruvex::Interruption.
//
// If the program has no QCoreApplication, the application creates one. A program that has one of its own must
// create it first.
#pragma once

#include "Pelko/Object.h"

#include <QTime>

#include <atomic>
#include <memory>

class QCoreApplication;

namespace Pelko {

class PELKO_API Application : public Object {
public:
    static Application* create();

    // Whether runs process no events. Default: off.
    bool isBatch() const { return batch_; }
    void setBatch(bool set) { batch_ = set; }
    // Measures the time since events were last processed; a run restarts it.
    QTime& getEventTimer() { return eventTimer_; }

    // Asks the run to stop: when it next processes events, it ends with Interruption "stopped by the user".
    // Each request has effect once. Safe to call from a signal handler and from another thread.
    void requestStop() noexcept { stopRequested_.store(true, std::memory_order_relaxed); }
    // Withdraws a request that has had no effect yet.
    void cancelStop() noexcept { stopRequested_.store(false, std::memory_order_relaxed); }
    bool isStopRequested() const noexcept { return stopRequested_.load(std::memory_order_relaxed); }

    std::string getClass() const override;
    ~Application() override;

protected:
    Application();
    void preDestroy() override;

private:
    class EventLoop;

    void onEvents();

    static_assert(std::atomic<bool>::is_always_lock_free);

    bool batch_ = false;
    QTime eventTimer_;
    std::atomic<bool> stopRequested_ = false;
    std::unique_ptr<EventLoop> eventLoop_;
};

extern PELKO_API Application* application;

} // namespace Pelko
