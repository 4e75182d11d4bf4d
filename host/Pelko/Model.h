// The whole in-memory host by one object: an application, a cell and an analyzer, as the globals, ended in
// reverse.
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

    Application* getApplication() const { return application; }
    Cell* getCell() const { return cell; }
    Module* getModule() const { return cell->getModule(); }
    Analyzer* getAnalyzer() const { return analyzer; }
};

} // namespace Pelko
