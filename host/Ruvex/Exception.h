// The exception family. Every exception carries a message, and the place where it was thrown.
//
//   Exception ─┬─ Error ── Critical             faults of the design or its constraints
//              ├─ InternalError ─┬─ InvalidRequest   an operation asked for what it cannot do
//              │                 ├─ FactoryFailed    an object that must not be created
//              │                 └─ Fatal            the end of a run
//              └─ Interruption                   the user stopped the run
//
// A place is fixed data (a source name without directory or extension, an operation, a number), so that
// moving code between files changes no message:
//
//   throw InvalidRequest(InternalError("Null pole", Error::locate("Tool", "loopPush", 566)));
#pragma once

#include "Ruvex/Export.h"

#include <exception>
#include <string>

namespace Ruvex {

struct RUVEX_API Place {
    std::string file;
    std::string function;
    unsigned line = 0; // 0: not located

    bool isKnown() const { return line != 0; }
    bool operator==(const Place&) const = default;
};

class RUVEX_API Exception : public std::exception {
public:
    explicit Exception(std::string message, Place place = {});
    ~Exception() override;

    const std::string& getMessage() const { return message_; }
    const Place& getPlace() const { return place_; }
    const char* what() const noexcept override { return message_.c_str(); }
    // The message, followed by " (file, function, line)" if the place is known.
    std::string _getLabel() const;

private:
    std::string message_;
    Place place_;
};

class RUVEX_API Error : public Exception {
public:
    using Exception::Exception;
    ~Error() override;

    static Place locate(const std::string& file, const std::string& function, unsigned line);
};

class RUVEX_API Critical : public Error {
public:
    using Error::Error;
    explicit Critical(const Error& error) : Error(error) {}
    ~Critical() override;
};

class RUVEX_API InternalError : public Exception {
public:
    using Exception::Exception;
    ~InternalError() override;
};

class RUVEX_API InvalidRequest : public InternalError {
public:
    explicit InvalidRequest(const InternalError& error) : InternalError(error) {}
    ~InvalidRequest() override;
};

class RUVEX_API FactoryFailed : public InternalError {
public:
    explicit FactoryFailed(const InternalError& error) : InternalError(error) {}
    ~FactoryFailed() override;
};

class RUVEX_API Fatal : public InternalError {
public:
    explicit Fatal(const InternalError& error) : InternalError(error) {}
    ~Fatal() override;
};

class RUVEX_API Interruption : public Exception {
public:
    using Exception::Exception;
    ~Interruption() override;
};

} // namespace Ruvex
