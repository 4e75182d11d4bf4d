// The base of analysis tools. A tool is registered under its name while it exists. No two tools have the same
// name.
//
// The order of the virtual operations is part of the interface.
#pragma once

#include "Ruvex/Export.h"
#include "Ruvex/Record.h"

#include <string>

namespace Pelko {

class Object;

class PELKO_API Tool {
public:
    Tool(const Tool&) = delete;
    Tool& operator=(const Tool&) = delete;
    virtual ~Tool();

    // "Tool " and the name.
    virtual std::string _getLabel() const;
    virtual Ruvex::Slot* _getSlot() const;
    // A new record of the tool, or null outside debug mode. The caller owns it.
    virtual Ruvex::Record* _getRecord() const;
    virtual bool _hasRecord() const;
    // The name of the tool in messages. The default is the tool's name.
    virtual std::string getAlias() const;
    // Runs the tool. Returns whether the run completed.
    virtual bool launch() = 0;

protected:
    virtual void preDestroy();

public:
    const std::string& getName() const { return name_; }
    // Destroys the tool. InvalidRequest: "Tool is running".
    void destroy();

    // `launch()` holds a Run while it works. While one exists, a listener, an event or another callback that
    // destroys the tool, the analyzer, the application, the cell, a domain, a subdomain, an exception, a pole
    // or an arc gets InvalidRequest, and the run continues. Only events may destroy poles and arcs, because a
    // run checks for that after it has processed them.
    class PELKO_API Run {
    public:
        explicit Run(const Tool* tool) noexcept;
        Run(const Run&) = delete;
        Run& operator=(const Run&) = delete;
        ~Run();

        // Whether the tool runs; for null, whether any tool runs.
        static bool isGoingOn(const Tool* tool = nullptr) noexcept;
        // Whether the object cannot be destroyed now because a tool runs.
        static bool keeps(const Object* object);

        // The run holds one while it processes events.
        class PELKO_API Yield {
        public:
            Yield() noexcept;
            Yield(const Yield&) = delete;
            Yield& operator=(const Yield&) = delete;
            ~Yield();
        };
        // The run holds one while it destroys the object itself.
        class PELKO_API Release {
        public:
            explicit Release(const Object* object) noexcept;
            Release(const Release&) = delete;
            Release& operator=(const Release&) = delete;
            ~Release();

        private:
            const Object* outer_;
        };

    private:
        const Tool* tool_;
        const Run* outer_;
    };

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
