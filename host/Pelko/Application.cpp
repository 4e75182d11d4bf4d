#include "Pelko/Application.h"

#include <QAbstractEventDispatcher>
#include <QCoreApplication>

#include <clocale>
#include <string>

namespace Pelko {

Application* application = nullptr;

// The Qt side. The stop request is read when the event dispatcher wakes up, which is when event processing
// starts and before any event is taken. So an exception that is thrown there leaves no event half processed.
class Application::EventLoop {
public:
    explicit EventLoop(Application& owner) {
        if (!QCoreApplication::instance())
            makeApplication();
        connection_ = QObject::connect(QAbstractEventDispatcher::instance(), &QAbstractEventDispatcher::awake,
                                       [&owner] { owner.onEvents(); });
    }

    ~EventLoop() { QObject::disconnect(connection_); }

private:
    // Qt sets the program's locale from the environment; this restores the program's own.
    void makeApplication() {
        const std::string locale = std::setlocale(LC_ALL, nullptr);
        static int argumentCount = 1;
        static char name[] = "vorlen";
        static char* arguments[] = {name, nullptr};
        own_ = std::make_unique<QCoreApplication>(argumentCount, arguments);
        std::setlocale(LC_ALL, locale.c_str());
    }

    std::unique_ptr<QCoreApplication> own_;
    QMetaObject::Connection connection_;
};

Application::Application()
    : eventTimer_(QTime::currentTime()), eventLoop_(std::make_unique<EventLoop>(*this)) {}

Application::~Application() = default;

Application* Application::create() {
    auto* created = new Application;
    created->postCreate();
    return created;
}

void Application::preDestroy() {
    notifyDestroyed(*this);
    if (Pelko::application == this)
        Pelko::application = nullptr;
}

void Application::onEvents() {
    if (stopRequested_.exchange(false, std::memory_order_relaxed))
        throw Ruvex::Interruption("stopped by the user");
}

std::string Application::getClass() const { return "Application"; }

} // namespace Pelko
