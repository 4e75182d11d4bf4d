#include "Vorlen/detail/EventPump.h"

#include "Pelko/Application.h"
#include "Pelko/Tool.h"

#include <QCoreApplication>
#include <QTime>

namespace Vorlen::detail {

namespace {

constexpr int patience = 250; // ms

} // namespace

// Both calls are deprecated since Qt 5.14, but have not changed.
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wdeprecated-declarations"

bool isPumpDue() {
    return Pelko::application && !Pelko::application->isBatch() &&
           Pelko::application->getEventTimer().elapsed() > patience;
}

bool pump() {
    if (!isPumpDue())
        return false;
    Pelko::application->getEventTimer().restart();
    const Pelko::Tool::Run::Yield yield;
    QCoreApplication::processEvents();
    return true;
}

#pragma GCC diagnostic pop

} // namespace Vorlen::detail
