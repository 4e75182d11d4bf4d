// The application: batch flag, timer, and the stop request that interrupts a run during the processing of
// events.
#include "ModelTest.h"

#include <QCoreApplication>
#include <QEvent>
#include <QObject>

#include <chrono>
#include <clocale>
#include <csignal>
#include <cstdlib>
#include <functional>
#include <memory>
#include <thread>

namespace HostTest {

namespace {

const auto postedType = static_cast<QEvent::Type>(QEvent::User + 1);

// Counts the events that are posted to it.
class Receiver : public QObject {
public:
    bool event(QEvent* event) override {
        if (event->type() != postedType)
            return QObject::event(event);
        ++received;
        if (onEvent)
            onEvent();
        return true;
    }
    void post() { QCoreApplication::postEvent(this, new QEvent(postedType)); }

    int received = 0;
    std::function<void()> onEvent;
};

// Returns whether a stop request interrupted the processing of events.
bool isStopped() {
    try {
        QCoreApplication::processEvents();
        return false;
    } catch (const Ruvex::Interruption& interruption) {
        EXPECT_EQ(interruption.getMessage(), "stopped by the user");
        EXPECT_FALSE(interruption.getPlace().isKnown());
        return true;
    }
}

class ApplicationTest : public ModelTest {
protected:
    Receiver receiver_;
};

TEST_F(ApplicationTest, BatchFlagAndTimer) {
    EXPECT_FALSE(application->isBatch());
    application->setBatch(true);
    EXPECT_TRUE(application->isBatch());
    application->setBatch(false);
    EXPECT_FALSE(application->isBatch());
    application->getEventTimer().start();
    std::this_thread::sleep_for(std::chrono::milliseconds(20));
    EXPECT_GE(application->getEventTimer().elapsed(), 15);
    EXPECT_GE(application->getEventTimer().restart(), 15);
    EXPECT_LT(application->getEventTimer().elapsed(), 10000);
}

TEST_F(ApplicationTest, WithoutRequestEventsAreProcessed) {
    EXPECT_NE(QCoreApplication::instance(), nullptr);
    receiver_.post();
    receiver_.post();
    EXPECT_FALSE(isStopped());
    EXPECT_EQ(receiver_.received, 2);
}

// The request interrupts this processing before any event is delivered; the next one delivers them.
TEST_F(ApplicationTest, ARequestIsHeardOnce) {
    for (int round = 1; round <= 3; ++round) {
        receiver_.post();
        application->requestStop();
        application->requestStop();
        EXPECT_TRUE(application->isStopRequested());
        EXPECT_TRUE(isStopped());
        EXPECT_EQ(receiver_.received, round - 1);
        EXPECT_FALSE(application->isStopRequested());
        EXPECT_FALSE(isStopped());
        EXPECT_EQ(receiver_.received, round);
    }
}

TEST_F(ApplicationTest, ARequestIsTakenBack) {
    application->requestStop();
    application->cancelStop();
    EXPECT_FALSE(application->isStopRequested());
    EXPECT_FALSE(isStopped());
    application->cancelStop();
    EXPECT_FALSE(isStopped());
}

// A button in a window makes the request from an event handler. The events behind it are delivered, and the
// next processing is interrupted.
TEST_F(ApplicationTest, ARequestFromAnEventHandler) {
    receiver_.onEvent = [] { application->requestStop(); };
    receiver_.post();
    receiver_.post();
    EXPECT_FALSE(isStopped());
    EXPECT_EQ(receiver_.received, 2);
    receiver_.onEvent = nullptr;
    EXPECT_TRUE(isStopped());
    EXPECT_FALSE(isStopped());
}

TEST_F(ApplicationTest, ARequestFromASignalHandler) {
    struct sigaction action = {}, before = {};
    action.sa_handler = [](int) { application->requestStop(); };
    ASSERT_EQ(sigaction(SIGUSR1, &action, &before), 0);
    for (int round = 0; round < 2; ++round) {
        EXPECT_FALSE(isStopped());
        ASSERT_EQ(raise(SIGUSR1), 0);
        EXPECT_TRUE(isStopped());
    }
    sigaction(SIGUSR1, &before, nullptr);
    receiver_.post();
    EXPECT_FALSE(isStopped());
    EXPECT_EQ(receiver_.received, 1);
}

TEST_F(ApplicationTest, ARequestFromAnotherThread) {
    std::thread([] { application->requestStop(); }).join();
    EXPECT_TRUE(isStopped());
    EXPECT_FALSE(isStopped());
}

// Later events, and a nested processing of events, work as usual.
TEST_F(ApplicationTest, NestedProcessingHearsIt) {
    bool nestedStopped = false;
    receiver_.onEvent = [&nestedStopped] {
        application->requestStop();
        nestedStopped = isStopped();
    };
    receiver_.post();
    EXPECT_FALSE(isStopped());
    EXPECT_TRUE(nestedStopped);
    EXPECT_EQ(receiver_.received, 1);
    receiver_.onEvent = nullptr;
    receiver_.post();
    EXPECT_FALSE(isStopped());
    EXPECT_EQ(receiver_.received, 2);
}

// --- With the model, and without ---

TEST(ApplicationLife, ComesAndGoesWithTheModel) {
    for (int round = 0; round < 3; ++round) {
        EXPECT_EQ(QCoreApplication::instance(), nullptr);
        const Model model("top");
        EXPECT_NE(QCoreApplication::instance(), nullptr);
        application->requestStop();
        EXPECT_TRUE(isStopped());
        application->requestStop(); // has no effect any more
    }
    EXPECT_EQ(QCoreApplication::instance(), nullptr);
}

// Qt takes the locale from the environment once per process, so this test needs a new process.
TEST(ApplicationLifeDeathTest, LeavesTheLocaleAlone) {
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    const auto isKept = [] {
        setenv("LC_ALL", "C.UTF-8", 1);
        const std::string before = std::setlocale(LC_ALL, nullptr);
        const Model model("top");
        return before == "C" && std::setlocale(LC_ALL, nullptr) == before && !isStopped();
    };
    EXPECT_EXIT(std::exit(isKept() ? 0 : 1), testing::ExitedWithCode(0), "");
}

TEST(ApplicationLife, AProgramKeepsItsOwn) {
    int argumentCount = 1;
    char name[] = "host";
    char* arguments[] = {name, nullptr};
    const std::string before = std::setlocale(LC_ALL, nullptr);
    auto own = std::make_unique<QCoreApplication>(argumentCount, arguments);
    Receiver receiver;
    {
        const Model model("top");
        EXPECT_EQ(QCoreApplication::instance(), own.get());
        application->requestStop();
        receiver.post();
        EXPECT_TRUE(isStopped());
    }
    EXPECT_EQ(QCoreApplication::instance(), own.get());
    EXPECT_FALSE(isStopped());
    EXPECT_EQ(receiver.received, 1);
    own.reset();
    std::setlocale(LC_ALL, before.c_str());
}

} // namespace

} // namespace HostTest
