// A slot: one named entry of a record. It shows its value as a data label and, if the value has parts, as a
// data record.
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
    // The record that owns the slot, or null.
    Record* getOwner() const { return owner_; }
    void setOwner(Record* owner) { owner_ = owner; }

    // Whether this slot is the title of the slots that follow.
    virtual bool isHeader() const;
    // The label of the value; empty if there is none.
    virtual std::string getDataLabel() const;
    // A new record of the value, or null. The caller owns it.
    virtual Record* getDataRecord() const;
    // Whether there is no data record.
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
