// The whole in-memory host in one object. It creates an application, a cell and an analyzer as the globals,
// and destroys them in reverse order.
//
// A model is destroyed as a whole, also if listeners throw: all of them are notified of every object. `end()`
// throws the first exception after the model is destroyed; the destructor prints it as a warning. A
// destructor cannot refuse, so a model whose destructor is called while a tool runs is destroyed when the run
// is over.
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
    // Only one model can exist at a time. FactoryFailed: "A model exists already", "Empty cell name".
    explicit Model(const std::string& designName);
    Model(const Model&) = delete;
    Model& operator=(const Model&) = delete;
    ~Model();

    // Destroys the application, the cell and the analyzer with all that is in them. A second call, and the
    // destructor, then do nothing. InvalidRequest: "A tool is running".
    void end();

    Application* getApplication() const { return application; }
    Cell* getCell() const { return cell; }
    Module* getModule() const { return cell->getModule(); }
    Analyzer* getAnalyzer() const { return analyzer; }

private:
    friend class Tool;

    // Called at the end of a run: destroys a model whose destructor was called during the run.
    static void endPostponed() noexcept;
};

} // namespace Pelko
