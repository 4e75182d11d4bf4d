#include "Pelko/Model.h"

#include "Pelko/detail/Undo.h"
#include "Ruvex/Refusal.h"

namespace Pelko {

Model::Model(const std::string& designName) {
    Ruvex::require<Ruvex::FactoryFailed>(!application && !cell && !analyzer, "Model", "Model", 1,
                                         "A model exists already");
    cell = Cell::create(designName);
    detail::Undo endCell([] { cell->destroy(); });
    analyzer = Analyzer::create(cell);
    detail::Undo endAnalyzer([] { analyzer->destroy(); });
    application = Application::create();
    endCell.release();
    endAnalyzer.release();
}

Model::~Model() {
    application->destroy();
    analyzer->destroy();
    cell->destroy();
}

} // namespace Pelko
