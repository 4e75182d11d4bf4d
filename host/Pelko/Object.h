// The base of database objects.
//
// Every object has a creation stamp, unique in the process; `StampLess` orders objects by it, and null before
// all. Every ordered set or map of objects is ordered so, never by address.
//
// Lifecycle: a class's static `create(...)` calls its `preCreate(...)` (checks the arguments, may throw),
// allocates, and calls `postCreate()`; `destroy()` calls `preDestroy()` and deletes. Objects are made and
// ended in no other way. Listeners hear of an object after `postCreate()`, when it is whole, and in
// `preDestroy()`, while it still is.
//
// The order of the virtual operations is part of the interface.
#pragma once

#include "Ruvex/Exception.h"
#include "Ruvex/Export.h"
#include "Ruvex/Slot.h"

#include <set>
#include <string>

namespace Pelko {

class Issue;
class Object;

class PELKO_API ObjectListener {
public:
    virtual ~ObjectListener();
    virtual void onCreated(Object* object);
    // The object, and what it refers to, can still be read.
    virtual void onDestroyed(Object* object);
};

// Told of each sweep just before it is destroyed, and of no other object.
//
// A sweep is an object that an engine attaches to the database for a part of a run: its class derives from
// Object directly and belongs to the engine. A listener that reads it converts the pointer to the engine's own
// type; a `dynamic_cast` there costs once per sweep.
class PELKO_API SweepListener {
public:
    virtual ~SweepListener();
    // The sweep, its results and what it refers to can still be read; destroying it throws InvalidRequest.
    // Called after the ObjectListeners, also for the sweeps of a run that failed. An exception goes to whoever
    // destroys the sweep: in a run it ends the run, as that of an ObjectListener does.
    virtual void onSweepDestroyed(Object* sweep) = 0;
};

class PELKO_API Object {
public:
    struct StampLess {
        bool operator()(const Object* a, const Object* b) const {
            if (!a || !b)
                return !a && b;
            return a->stamp_ < b->stamp_;
        }
    };

    Object(const Object&) = delete;
    Object& operator=(const Object&) = delete;
    virtual ~Object();

    // The class and the alias: "Pole u1/A".
    virtual std::string _getLabel() const;
    virtual Ruvex::Slot* _getSlot() const;
    // Null outside debug mode. The caller owns it.
    virtual Ruvex::Record* _getRecord() const;
    virtual bool _hasRecord() const;
    // The name of the object's class, without its namespace.
    virtual std::string getClass() const;
    // What the object is called in messages.
    virtual std::string getAlias() const;
    virtual std::string getReprLabel() const;
    virtual bool isDestroyable() const { return true; }
    // Prints the label and the record on the console.
    virtual void printDetails() const;
    // Adds what is inconsistent about the object.
    virtual void check(Issue& issue) const;

protected:
    virtual void preDestroy();

public:
    virtual bool isTouchable() const { return false; }

    unsigned long getStamp() const { return stamp_; }
    // Throws InvalidRequest "Not destroyable: " and the label where `isDestroyable()` is false, and leaves
    // the object as it is. The same with "Not destroyable now: " for an object that somebody keeps, that a
    // run works on (Tool::Run), or of whose creation or end listeners are just told.
    void destroy();

    // While one lives, the object is not destroyed. Null keeps nothing.
    class PELKO_API Keep {
    public:
        explicit Keep(const Object* object) noexcept;
        Keep(const Keep&) = delete;
        Keep& operator=(const Keep&) = delete;
        ~Keep();

    private:
        friend class Object;

        const Object* object_;
        Keep* next_;
        Keep* previous_ = nullptr;
    };

    // A listener is heard from now on, in the order of adding. It must outlive its stay; adding twice counts
    // once.
    static void addListener(ObjectListener* listener);
    static void removeListener(ObjectListener* listener);
    // The same for listeners of sweeps. Objects of the database cost them nothing.
    static void addSweepListener(SweepListener* listener);
    static void removeSweepListener(SweepListener* listener);

protected:
    Object();

    static void preCreate() {}
    void postCreate();
    // Tells the ObjectListeners. The `preDestroy()` of a class of the database calls this, not
    // `Object::preDestroy()`, which tells the SweepListeners as well.
    static void notifyDestroyed(Object& object);
    // For an owner whose part is destroyed with it: calls the part's `preDestroy()`.
    static void endPart(Object& part);

private:
    static bool isKept(const Object* object);

    unsigned long stamp_;
};

} // namespace Pelko
