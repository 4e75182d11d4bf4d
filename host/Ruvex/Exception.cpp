#include "Ruvex/Exception.h"

#include <utility>

namespace Ruvex {

Exception::Exception(std::string message, Place place)
    : message_(std::move(message)), place_(std::move(place)) {}

Exception::~Exception() = default;
Error::~Error() = default;
Critical::~Critical() = default;
InternalError::~InternalError() = default;
InvalidRequest::~InvalidRequest() = default;
FactoryFailed::~FactoryFailed() = default;
Fatal::~Fatal() = default;
Interruption::~Interruption() = default;

std::string Exception::_getLabel() const {
    if (!place_.isKnown())
        return message_;
    return message_ + " (" + place_.file + ", " + place_.function + ", " + std::to_string(place_.line) + ")";
}

Place Error::locate(const std::string& file, const std::string& function, unsigned line) {
    return {file, function, line};
}

} // namespace Ruvex
