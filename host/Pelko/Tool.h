// The base of analysis tools. A tool is registered under its name while it lives; a name is given once.
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
    // InvalidRequest: "Tool is running".
    void destroy();

    // A run of a tool, while it lives: `launch()` has one. What the run works on stays until it is over. A
    // listener, an event or another callback that destroys the tool, the analyzer, the application, the cell,
    // a domain, a subdomain, an exception, a pole or an arc meanwhile gets InvalidRequest, and the run goes
    // on. Events may destroy poles and arcs, since a run looks for that when it has processed them.
    class PELKO_API Run {
    public:
        explicit Run(const Tool* tool) noexcept;
        Run(const Run&) = delete;
        Run& operator=(const Run&) = delete;
        ~Run();

        // Whether a run goes on: of this tool, or of any for null.
        static bool isGoingOn(const Tool* tool = nullptr) noexcept;
        static bool keeps(const Object* object);

        // While one lives, the run processes events.
        class PELKO_API Yield {
        public:
            Yield() noexcept;
            Yield(const Yield&) = delete;
            Yield& operator=(const Yield&) = delete;
            ~Yield();
        };
        // While one lives, the run itself destroys the object.
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
