// The module of a cell: its instances, pins and nets. Their own factories create them; they are destroyed
// with the module. A look-up by name is O(1).
#pragma once

#include "Pelko/Instance.h"
#include "Pelko/Net.h"
#include "Pelko/Pin.h"

#include <memory>
#include <unordered_map>
#include <vector>

namespace Pelko {

class Cell;

class PELKO_API Module : public Object {
public:
    const std::string& getName() const { return name_; }
    Cell* getCell() const { return cell_; }
    // The PLL instances, in order of creation.
    Ruvex::Collection<PLL*> getPLLs() const {
        return Ruvex::MemoryCollection<PLL*>(plls_.data(), plls_.data() + plls_.size());
    }
    // The instance of this name, or null.
    Instance* getInstance(const std::string& name) const;
    // The net of this name, or null.
    Net* getNet(const std::string& name) const;

    std::string getClass() const override;
    std::string getAlias() const override { return name_; }
    // A module is destroyed only with its cell.
    bool isDestroyable() const override { return false; }

    ~Module() override;

protected:
    void preDestroy() override;

private:
    friend class Cell;
    friend class Instance;
    friend class Net;
    friend class Pin;
    friend class PLL;

    Module(Cell* owner, const std::string& name);

    Cell* cell_;
    std::string name_;
    std::vector<std::unique_ptr<Instance>> instances_;
    std::vector<std::unique_ptr<Pin>> pins_;
    std::vector<std::unique_ptr<Net>> nets_;
    std::vector<PLL*> plls_;
    std::unordered_map<std::string, Instance*> instancesByName_;
    std::unordered_map<std::string, Net*> netsByName_;
};

} // namespace Pelko
