// The tool as an object of the host: its creation, its names, its record.
#include "Pelko/Analyzer.h"
#include "Vorlen/Tool.h"

namespace Vorlen {

namespace {

constexpr const char* toolName = "Analyzing";
constexpr const char* aliasPrefix = "VORLEN-";
constexpr unsigned long majorVersion = 4;
constexpr unsigned long minorVersion = 0;

} // namespace

Tool::Tool() : Pelko::Tool(toolName) {}

Tool::~Tool() = default;

void Tool::preCreate() { Pelko::Tool::preCreate(toolName); }

void Tool::postCreate() { Pelko::Tool::postCreate(toolName); }

void Tool::preDestroy() { Pelko::Tool::preDestroy(); }

Tool* Tool::create() {
    preCreate();
    Tool* tool = new Tool;
    tool->postCreate();
    return tool;
}

std::string Tool::getAlias() const {
    return aliasPrefix + Ruvex::getLabel(majorVersion) + "." + Ruvex::getLabel(minorVersion);
}

bool Tool::isExhaustive() const {
    return Pelko::analyzer->getAnalysisMode().getEffective().getCode() == Pelko::AnalysisMode::Exhaustive;
}

std::string Tool::_getLabel() const { return Ruvex::Label::create(Pelko::Tool::_getLabel()).getText(); }

Ruvex::Record* Tool::_getRecord() const {
    Ruvex::Record* record = Pelko::Tool::_getRecord();
    if (record)
        record->addHeader("Vorlen::Tool");
    return record;
}

} // namespace Vorlen
