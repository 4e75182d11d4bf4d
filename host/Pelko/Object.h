// The base of database objects.
//
// Every object has a creation stamp, which is unique in the process. `StampLess` orders objects by it, with
// null first. Every ordered set or map of objects uses that order, never the order of addresses.
//
// Lifecycle: the static `create(...)` of a class calls its `preCreate(...)`, which checks the arguments and
// may throw, allocates, and calls `postCreate()`. `destroy()` calls `preDestroy()` and deletes. Objects are
// created and destroyed in no other way. Listeners are called at the end of `postCreate()`, when the object
// is complete, and at the start of `preDestroy()`, while it still is.
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

// Told of every object that is created and of every object that is destroyed. An exception goes to whoever
// creates or destroys the object.
class PELKO_API ObjectListener {
public:
    virtual ~ObjectListener();
    // Called when the object is complete. The default does nothing.
    virtual void onCreated(Object* object);
    // Called while the object, and what it refers to, can still be read. The default does nothing.
    virtual void onDestroyed(Object* object);
};

// Told of each sweep just before it is destroyed, and of no other object.
//
// A sweep is an object that an engine attaches to the database for a part of a run: its class derives from
// Object directly and belongs to the engine. A listener that reads it converts the pointer to the engine's
// own type; a `dynamic_cast` there costs once per sweep.
class PELKO_API SweepListener {
public:
    virtual ~SweepListener();
    // The sweep, its results and what it refers to can still be read; destroying it throws InvalidRequest.
    // Called after the ObjectListeners, also for the sweeps of a run that failed. An exception goes to
    // whoever destroys the sweep: in a run it ends the run, as that of an ObjectListener does.
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

    // The class and the alias, such as "Pole u1/A".
    virtual std::string _getLabel() const;
    // A new slot that shows the object. The caller owns it; the object must outlive it.
    virtual Ruvex::Slot* _getSlot() const;
    // A new record of the object, or null outside debug mode. The caller owns it.
    virtual Ruvex::Record* _getRecord() const;
    // Whether `_getRecord()` returns a record.
    virtual bool _hasRecord() const;
    // The name of the object's class, without its namespace.
    virtual std::string getClass() const;
    // The name of the object in messages. The default is "#" and the stamp.
    virtual std::string getAlias() const;
    // The name of the object in representations. The default is the alias.
    virtual std::string getReprLabel() const;
    // Whether `destroy()` may be called: false while something refers to the object.
    virtual bool isDestroyable() const { return true; }
    // Prints the label and the record on the console.
    virtual void printDetails() const;
    // Adds a finding to `issue` for everything that is inconsistent about the object.
    virtual void check(Issue& issue) const;

protected:
    virtual void preDestroy();

public:
    virtual bool isTouchable() const { return false; }

    unsigned long getStamp() const { return stamp_; }
    // Destroys the object. If it refuses or a listener throws, the object stays as it is. InvalidRequest:
    // "Not destroyable: ..." if `isDestroyable()` is false; "Not destroyable now: ..." if a `Keep` for the
    // object exists, if a run works on it (Tool::Run), or while listeners are notified of its creation or
    // destruction.
    void destroy();

    // The object cannot be destroyed while a `Keep` for it exists. Null keeps nothing. O(1); `destroy()`
    // looks at all that exist.
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

    // Adds a listener; listeners are called in the order of adding. It must be removed before it is
    // destroyed. A listener that is there already keeps its place. InvalidRequest: "Null listener".
    static void addListener(ObjectListener* listener);
    // A listener that was never added is ignored. Listeners may be removed while they are called.
    static void removeListener(ObjectListener* listener);
    // The same for listeners of sweeps. Objects of the database cost nothing for them.
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
