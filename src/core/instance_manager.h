// Services of which there is one: created on first use, destroyed in a fixed order when the process
// ends or the module that holds this library is unloaded.
#ifndef PLINTH_INSTANCE_MANAGER_H
#define PLINTH_INSTANCE_MANAGER_H

#include <stddef.h>

#include "core/types.h"

namespace Plinth {

// A holder as the registry sees it. Holders are compared by destruction priority.
class InstanceManagerBase {
  public:
    InstanceManagerBase() : priority(0) {}
    virtual ~InstanceManagerBase() {}

    // Does nothing when there is no instance.
    virtual void DestroyInstance() = 0;

    // Lower goes first; 0 after construction.
    Int32 Priority() const { return priority; }
    void SetPriority(Int32 value) { priority = value; }

    bool operator<(const InstanceManagerBase& other) const { return priority < other.priority; }
    bool operator>(const InstanceManagerBase& other) const { return priority > other.priority; }
    bool operator==(const InstanceManagerBase& other) const { return priority == other.priority; }

  private:
    InstanceManagerBase(const InstanceManagerBase&);
    InstanceManagerBase& operator=(const InstanceManagerBase&);

    Int32 priority;
};

// Owns holders and destroys them in ascending order of priority. Its storage comes from the C heap,
// because the memory manager is itself held here.
class InstanceRegistry {
  public:
    InstanceRegistry();
    ~InstanceRegistry();

    // Takes the holder over. Without memory for the entry, destroys it and throws std::bad_alloc.
    void Register(InstanceManagerBase* holder);
    Int32 Count() const { return count; }

    // Destroys every instance with its holder, those included that are registered meanwhile, and
    // leaves the registry empty.
    void DestroyAll();

    // The registry of the services. Created on first use, where std::bad_alloc is thrown without
    // memory for it; destroyed by the C library's exit handlers, those of the module that holds
    // this library.
    static InstanceRegistry& Global();

  private:
    InstanceRegistry(const InstanceRegistry&);
    InstanceRegistry& operator=(const InstanceRegistry&);

    void SortByPriority();

    InstanceManagerBase** holders;
    Int32 count;
};

// The holder of the one T, which is made by T's default constructor.
template <class T>
class InstanceManager : public InstanceManagerBase {
  public:
    InstanceManager() : instance(NULL) {}
    virtual ~InstanceManager() {
        if (HolderPointer() == this) {
            HolderPointer() = NULL;
        }
    }

    virtual void DestroyInstance() {
        delete instance;
        instance = NULL;
    }

    // The service; made at the first call. Without memory for it, throws std::bad_alloc; a later
    // call tries again.
    static T& Get() {
        InstanceManager& own = Holder();
        if (own.instance == NULL) {
            own.instance = new T;
        }
        return *own.instance;
    }

    // The service's holder; made and registered at the first call. Without memory for it or for
    // the registry, throws std::bad_alloc; a later call tries again.
    static InstanceManager& Holder() {
        InstanceManager*& holder = HolderPointer();
        if (holder == NULL) {
            InstanceRegistry& registry = InstanceRegistry::Global();
            InstanceManager* const made = new InstanceManager;
            registry.Register(made);
            holder = made;
        }
        return *holder;
    }

  private:
    // Where the holder stands; null before the first use. A service specialises it in its source
    // file: a template's own static variable would keep a Linux module from being unloaded.
    static InstanceManager*& HolderPointer() {
        static InstanceManager* holder = NULL;
        return holder;
    }

    T* instance;
};

}  // namespace Plinth

#endif
