// The whole in-memory host by one object: an application, a cell and an analyzer, as the globals, ended in
// reverse.
//
// A model ends as a whole, whatever listeners do. All of them are told of every object, also if some throw:
// `end()` throws the first exception when the model has ended, and the destructor prints it as a warning. A
// destructor cannot refuse, so a model that is destroyed while a tool runs ends when the run is over.
//
//   Pelko::Model model("top");
//   Pole* clk = Pole::createClockSource(model.getCell(), "clk");
//   …
#pragma once

#include "Pelko/Analyzer.h"
#include "Pelko/Application.h"
#include "Pelko/Cell.h"
#include "Pelko/Edge.h"
#include "Pelko/Module.h"
#include "Pelko/Subdomain.h"

namespace Pelko {

class PELKO_API Model {
public:
    // FactoryFailed: "A model exists already", "Empty cell name".
    explicit Model(const std::string& designName);
    Model(const Model&) = delete;
    Model& operator=(const Model&) = delete;
    ~Model();

    // Ends the model before its destructor does, which then does nothing; likewise a second time.
    // InvalidRequest: "A tool is running".
    void end();

    Application* getApplication() const { return application; }
    Cell* getCell() const { return cell; }
    Module* getModule() const { return cell->getModule(); }
    Analyzer* getAnalyzer() const { return analyzer; }

private:
    friend class Tool;

    // For the end of a run: ends a model that was destroyed during it.
    static void endPostponed() noexcept;
};

} // namespace Pelko
