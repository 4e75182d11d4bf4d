#include "Pelko/Net.h"

#include "Pelko/Module.h"
#include "Pelko/detail/Undo.h"
#include "Ruvex/Refusal.h"

namespace Pelko {

Net::~Net() = default;

Net* Net::create(Module* module, const std::string& name) {
    const auto require = [](bool condition, unsigned line, const char* message) {
        Ruvex::require<Ruvex::FactoryFailed>(condition, "Net", "create", line, message);
    };
    require(module, 1, "Null module");
    require(!name.empty(), 2, "Empty net name");
    require(!module->getNet(name), 3, "Net exists already");
    std::unique_ptr<Net> created(new Net(module, name));
    Net* net = created.get();
    module->netsByName_.emplace(name, net);
    detail::Undo forgetName([&] { module->netsByName_.erase(name); });
    module->nets_.push_back(std::move(created));
    forgetName.release();
    net->postCreate();
    return net;
}

std::string Net::getClass() const { return "Net"; }

} // namespace Pelko
