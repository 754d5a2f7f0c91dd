// A growing array of plain values.
#ifndef HOST_SDK_INCLUDE_TAB_H
#define HOST_SDK_INCLUDE_TAB_H

#include <stddef.h>
#include <stdlib.h>
#include <string.h>
#include <windows.h>

#include <new>

// Elements are moved as raw memory: no constructor or destructor of T ever runs, and what
// SetCount adds is garbage. Memory that is not there throws std::bad_alloc.
template <class T>
class Tab {
  public:
    Tab() : items_(NULL), count_(0), allocated_(0) {}
    Tab(const Tab& other) : items_(NULL), count_(0), allocated_(0) {
        Append(other.count_, other.items_);
    }
    ~Tab() { free(items_); }

    Tab& operator=(const Tab& other) {
        if (this != &other) {
            ZeroCount();
            Append(other.count_, other.items_);
        }
        return *this;
    }

    int Count() const { return count_; }
    // `resize`: gives back the memory that a smaller count does not need.
    void SetCount(int n, BOOL resize = TRUE) {
        if (n < 0)
            n = 0;
        if (resize || n > allocated_)
            Allocate(n);
        count_ = n;
    }
    void ZeroCount() { count_ = 0; }  // keeps the memory
    // Makes room for `num` elements, dropping those that are too many; gives the room there is.
    int Resize(int num) {
        Allocate(num < 0 ? 0 : num);
        if (count_ > allocated_)
            count_ = allocated_;
        return allocated_;
    }
    void Shrink() { Allocate(count_); }

    // Elements are copied; `el` may point into this table. The position of the first one comes
    // back. `allocExtra`: room to make for so many more when the memory must grow.
    int Append(int num, T* el, int allocExtra = 0) {
        const int at = count_;
        InsertGap(at, num, el, allocExtra);
        return at;
    }
    int Insert(int at, int num, T* el) {
        if (at < 0)
            at = 0;
        if (at > count_)
            at = count_;
        InsertGap(at, num, el, 0);
        return at;
    }
    // Closes the gap; parts outside the table are passed over. Gives the new count.
    int Delete(int start, int num) {
        if (start < 0 || start >= count_ || num <= 0)
            return count_;
        if (num > count_ - start)
            num = count_ - start;
        Move(items_ + start, items_ + start + num, count_ - start - num);
        return count_ -= num;
    }

    // `i` from 0 to Count() - 1; valid until the table grows or shrinks.
    T* Addr(int i) const { return items_ + i; }
    T& operator[](int i) const { return items_[i]; }

  private:
    static void Move(T* to, const T* from, int num) {
        if (num > 0)
            memmove(static_cast<void*>(to), from, num * sizeof(T));
    }

    void Allocate(int num) {
        if (num == allocated_)
            return;
        if (num == 0) {
            free(items_);
            items_ = NULL;
        } else {
            if (static_cast<size_t>(num) > static_cast<size_t>(-1) / sizeof(T)) {
                throw std::bad_alloc();
            }
            void* grown = realloc(static_cast<void*>(items_), num * sizeof(T));
            if (!grown)
                throw std::bad_alloc();
            items_ = static_cast<T*>(grown);
        }
        allocated_ = num;
    }

    // Room for `num` more; at least half as much again, so that adding one by one stays linear.
    void Grow(int num, int extra) {
        const int most = 0x7fffffff;
        if (num > most - count_)
            throw std::bad_alloc();
        const int needed = count_ + num;
        if (needed <= allocated_)
            return;
        int room = extra > 0 && extra <= most - needed ? needed + extra : needed;
        const int half = allocated_ / 2;
        if (allocated_ <= most - half && room < allocated_ + half)
            room = allocated_ + half;
        Allocate(room);
    }

    void InsertGap(int at, int num, const T* el, int extra) {
        if (num <= 0)
            return;
        const bool own = items_ && el >= items_ && el < items_ + count_;
        const size_t from = own ? el - items_ : 0;
        Grow(num, extra);
        if (own) {
            InsertOwn(at, num, static_cast<int>(from));
            return;
        }
        Move(items_ + at + num, items_ + at, count_ - at);
        Move(items_ + at, el, num);
        count_ += num;
    }

    // The elements to copy stand in the table itself: those behind the gap have moved with it.
    void InsertOwn(int at, int num, int from) {
        Move(items_ + at + num, items_ + at, count_ - at);
        const int before = from >= at ? 0 : at - from < num ? at - from : num;
        Move(items_ + at, items_ + from, before);
        Move(items_ + at + before, items_ + from + before + num, num - before);
        count_ += num;
    }

    T* items_;  // owned, by malloc; null: nothing allocated
    int count_;
    int allocated_;
};

#endif  // HOST_SDK_INCLUDE_TAB_H
