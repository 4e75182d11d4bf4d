// A slot: one named entry of a record. What it holds shows as a data label, and where the held value has
// parts of its own, as a data record.
#pragma once

#include "Ruvex/Label.h"

#include <memory>
#include <string>

namespace Ruvex {

class Record;

class RUVEX_API Slot {
public:
    Slot() = default;
    Slot(const Slot&) = delete;
    Slot& operator=(const Slot&) = delete;
    virtual ~Slot();

    const std::string& getName() const { return name_; }
    void setName(const std::string& name) { name_ = name; }
    Record* getOwner() const { return owner_; }
    void setOwner(Record* owner) { owner_ = owner; }

    // Whether this slot is the title of the slots behind it.
    virtual bool isHeader() const;
    // The held value's label; empty for none.
    virtual std::string getDataLabel() const;
    // The held value's record, or null. The caller owns it.
    virtual Record* getDataRecord() const;
    // Whether there is nothing to open behind the label.
    virtual bool isTerminal() const;
    // "name: data label", or whichever of the two is not empty.
    virtual std::string _getLabel() const;

private:
    std::string name_;
    Record* owner_ = nullptr;
};

// An empty slot.
class RUVEX_API NullSlot : public Slot {
public:
    static NullSlot* create() { return new NullSlot; }
    ~NullSlot() override;
};

// The title of a group of slots.
class RUVEX_API HeaderSlot : public Slot {
public:
    explicit HeaderSlot(const std::string& text) { setName(text); }
    ~HeaderSlot() override;

    bool isHeader() const override;
};

// A slot that shows a database object: the object's label, and its record. The object must outlive the slot.
template <class T>
class ObjectSlot : public Slot {
public:
    explicit ObjectSlot(const T* object) : object_(object) {}

    std::string getDataLabel() const override { return getLabel(object_); }
    Record* getDataRecord() const override { return object_ ? object_->_getRecord() : nullptr; }
    bool isTerminal() const override { return !object_ || !object_->_hasRecord(); }

private:
    const T* object_;
};

} // namespace Ruvex
