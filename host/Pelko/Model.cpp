#include "Pelko/Model.h"

#include "Pelko/Tool.h"
#include "Pelko/detail/ModelEnd.h"
#include "Pelko/detail/Undo.h"
#include "Ruvex/Console.h"
#include "Ruvex/Refusal.h"

namespace Pelko {

namespace {

const Model* living = nullptr; // the owner of the globals
bool isPostponed = false;      // its destructor was called during a run

void require(bool condition, unsigned line, const char* message) {
    Ruvex::require<Ruvex::InvalidRequest>(condition, "Model", "end", line, message);
}

template <class Object>
void destroy(Object* object) {
    if (object)
        detail::ModelEnd::guard([object] { object->destroy(); });
}

// Destroys everything in reverse order. Returns the first exception of a listener, or null.
std::exception_ptr endAll() {
    const detail::ModelEnd end;
    living = nullptr;
    isPostponed = false;
    destroy(application);
    destroy(analyzer);
    destroy(cell);
    return end.getFirst();
}

std::string textOf(const std::exception_ptr& failure) {
    try {
        std::rethrow_exception(failure);
    } catch (const Ruvex::Exception& exception) {
        return exception._getLabel();
    } catch (const std::exception& exception) {
        return exception.what();
    } catch (...) {
        return "something strange";
    }
}

// For destructors: prints the exception instead of throwing it. If the console fails too, nothing is
// reported.
void endQuietly() noexcept {
    try {
        if (const std::exception_ptr failure = endAll())
            Ruvex::console.warning("A listener failed while the model ended: " + textOf(failure), "");
    } catch (...) {
    }
}

} // namespace

Model::Model(const std::string& designName) {
    Ruvex::require<Ruvex::FactoryFailed>(!application && !cell && !analyzer, "Model", "Model", 1,
                                         "A model exists already");
    detail::Undo endWhatIsThere(endQuietly);
    cell = Cell::create(designName);
    analyzer = Analyzer::create(cell);
    application = Application::create();
    endWhatIsThere.release();
    living = this;
}

Model::~Model() {
    if (living != this)
        return;
    if (Tool::Run::isGoingOn())
        isPostponed = true;
    else
        endQuietly();
}

void Model::end() {
    if (living != this)
        return;
    require(!Tool::Run::isGoingOn(), 2, "A tool is running");
    if (const std::exception_ptr failure = endAll())
        std::rethrow_exception(failure);
}

void Model::endPostponed() noexcept {
    if (isPostponed)
        endQuietly();
}

} // namespace Pelko
