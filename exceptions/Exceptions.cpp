#include "exceptions/Exceptions.h"

namespace Exceptions {

Exceptions::Exceptions(const Design::RoutedDesign& design, const Model::Network& network,
                       const Model::Clocks& clocks, const Design::Constraints& constraints, int scale,
                       Base::Diagnostics& diagnostics)
    : design_(design), network_(network), clocks_(clocks), constraints_(constraints), scale_(scale),
      resolved_(resolve(design, network, constraints, diagnostics)), accounts_(constraints) {}

void Exceptions::makeClasses(Model::TimingModel& model) {
    encoding_.emplace(design_, network_, constraints_, resolved_.variants);
    judge_.emplace(constraints_, clocks_, scale_, resolved_.variants, *encoding_, accounts_);
    encoding_->makePaths(model);
}

void Exceptions::findCut(const Model::TimingModel& model) {
    accounts_.findCut(model, network_, clocks_, resolved_.variants, encoding_->numbers());
}

} // namespace Exceptions
