#include "Pelko/Model.h"

#include "Ruvex/Refusal.h"

namespace Pelko {

Model::Model(const std::string& designName) {
    Ruvex::require<Ruvex::FactoryFailed>(!application && !cell && !analyzer, "Model", "Model", 1,
                                         "A model exists already");
    cell = Cell::create(designName);
    analyzer = Analyzer::create(cell);
    application = Application::create();
}

Model::~Model() {
    application->destroy();
    analyzer->destroy();
    cell->destroy();
}

} // namespace Pelko
