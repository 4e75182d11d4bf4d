// The application: how a run yields to the program around it. The global `application` is the one that tools
// ask.
//
// In batch mode nothing is processed during a run. Otherwise a run calls QCoreApplication::processEvents()
// whenever the event timer shows more than 250 ms; there a stop request ends the run with
// Ruvex::Interruption.
//
// A program without a QCoreApplication gets one with the application; a program with one keeps it, and makes
// it first.
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

    // Off.
    bool isBatch() const { return batch_; }
    void setBatch(bool set) { batch_ = set; }
    QTime& getEventTimer() { return eventTimer_; }

    // Asks the run to stop: the next time it processes events, it ends with Interruption "stopped by the
    // user". Safe to call from a signal handler and from another thread. A request is heard once;
    // `cancelStop()` takes back one not heard yet.
    void requestStop() noexcept { stopRequested_.store(true, std::memory_order_relaxed); }
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
