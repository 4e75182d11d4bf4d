#include "Vorlen/detail/EventPump.h"

#include "Pelko/Application.h"

#include <QCoreApplication>
#include <QTime>

namespace Vorlen::detail {

namespace {

constexpr int patience = 250; // ms

} // namespace

bool pump() {
    if (!Pelko::application || Pelko::application->isBatch())
        return false;
    QTime& timer = Pelko::application->getEventTimer();
// Both calls are deprecated since Qt 5.14, and mean what they always did.
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wdeprecated-declarations"
    if (timer.elapsed() <= patience)
        return false;
    timer.restart();
#pragma GCC diagnostic pop
    QCoreApplication::processEvents();
    return true;
}

} // namespace Vorlen::detail
