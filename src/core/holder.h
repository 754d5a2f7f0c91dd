// Owners of a resource that give it back when they go out of scope.
#ifndef PLINTH_HOLDER_H
#define PLINTH_HOLDER_H

#include <stddef.h>
#include <stdio.h>

namespace Plinth {

// Owns a pointer that `release`, a function with external linkage, gives back. Null is held as
// "nothing" and never released. Not copyable.
template <class T, void (*release)(T*)>
class Holder {
  public:
    explicit Holder(T* owned = NULL) : held(owned) {}
    ~Holder() { Reset(NULL); }

    T* Get() const { return held; }
    T* operator->() const { return held; }

    // Gives the former pointer back and owns the new one; the pointer it holds already stays.
    void Reset(T* owned) {
        if (held != NULL && held != owned) {
            release(held);
        }
        held = owned;
    }

    // Hands the pointer over to the caller.
    T* Release() {
        T* const former = held;
        held = NULL;
        return former;
    }

  private:
    Holder(const Holder&);
    Holder& operator=(const Holder&);

    T* held;
};

inline void CloseFile(FILE* file) {
    fclose(file);
}

template <class T>
void DestroyObject(T* object) {
    delete object;
}

// A file of the C library.
typedef Holder<FILE, CloseFile> FileHolder;

// An object made by `new`.
template <class T>
class ObjectHolder : public Holder<T, DestroyObject<T> > {
  public:
    explicit ObjectHolder(T* owned = NULL) : Holder<T, DestroyObject<T> >(owned) {}
};

}  // namespace Plinth

#endif
