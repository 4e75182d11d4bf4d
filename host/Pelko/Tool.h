// The base of analysis tools. A tool is registered under its name while it lives; a name is given once.
//
// The order of the virtual operations is part of the interface.
#pragma once

#include "Ruvex/Export.h"
#include "Ruvex/Record.h"

#include <string>

namespace Pelko {

class PELKO_API Tool {
public:
    Tool(const Tool&) = delete;
    Tool& operator=(const Tool&) = delete;
    virtual ~Tool();

    // "Tool " and the name.
    virtual std::string _getLabel() const;
    virtual Ruvex::Slot* _getSlot() const;
    // Null outside debug mode. The caller owns it.
    virtual Ruvex::Record* _getRecord() const;
    virtual bool _hasRecord() const;
    virtual std::string getAlias() const;
    // Runs the tool, and says whether the run completed.
    virtual bool launch() = 0;

protected:
    virtual void preDestroy();

public:
    const std::string& getName() const { return name_; }
    void destroy();

    // The registered tool of this name, or null.
    static Tool* getTool(const std::string& name);

protected:
    explicit Tool(const std::string& name) : name_(name) {}

    // FactoryFailed: "Empty tool name", "Tool exists already".
    static void preCreate(const std::string& name);
    // InvalidRequest: "Tool of another name".
    void postCreate(const std::string& name);

private:
    std::string name_;
};

} // namespace Pelko
