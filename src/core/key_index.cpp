#include "core/key_index.h"

#include <stddef.h>
#include <string.h>

#include <new>

#include "core/memory_manager.h"

namespace Plinth {

namespace {

const UInt32 kFirstSlotCount = 16;
const UInt32 kMaxSlotCount = 0x80000000u;

// Low bits of many keys are zeros (of addresses); the product's high bits depend on all of them.
UInt32 Hash(UInt64 key) {
    const UInt64 golden = (static_cast<UInt64>(0x9e3779b9u) << 32) | 0x7f4a7c15u;
    return static_cast<UInt32>((key * golden) >> 32);
}

}  // namespace

KeyIndex::KeyIndex() : slots(NULL), slotCount(0), count(0) {
}

KeyIndex::~KeyIndex() {
    Clear();
}

bool KeyIndex::Find(UInt64 key, Int32& value) const {
    if (slotCount == 0) {
        return false;
    }
    const Slot* const slot = SlotOf(key);
    if (!slot->used) {
        return false;
    }
    value = slot->value;
    return true;
}

void KeyIndex::Set(UInt64 key, Int32 value) {
    if (slotCount == 0) {
        Rebuild(kFirstSlotCount);
    }
    Slot* slot = SlotOf(key);
    if (!slot->used) {
        if (static_cast<UInt32>(count) + 1 > slotCount / 2) {
            if (slotCount == kMaxSlotCount) {
                throw std::bad_alloc();
            }
            Rebuild(slotCount * 2);
            slot = SlotOf(key);
        }
        slot->key = key;
        slot->used = 1;
        ++count;
    }
    slot->value = value;
}

void KeyIndex::Reserve(Int32 newCount) {
    UInt32 needed = kFirstSlotCount;
    while (newCount > 0 && static_cast<UInt32>(newCount) > needed / 2) {
        if (needed == kMaxSlotCount) {
            throw std::bad_alloc();
        }
        needed *= 2;
    }
    if (newCount > 0 && needed > slotCount) {
        Rebuild(needed);
    }
}

void KeyIndex::Clear() {
    GetMemoryManager().Free(slots);
    slots = NULL;
    slotCount = 0;
    count = 0;
}

// The slot that holds the key, or the free one where it belongs. One slot at least is free.
KeyIndex::Slot* KeyIndex::SlotOf(UInt64 key) const {
    UInt32 position = Hash(key) & (slotCount - 1);
    while (slots[position].used && slots[position].key != key) {
        position = (position + 1) & (slotCount - 1);
    }
    return slots + position;
}

void KeyIndex::Rebuild(UInt32 newSlotCount) {
    const size_t size = static_cast<size_t>(newSlotCount) * sizeof(Slot);
    MemoryManager& memory = GetMemoryManager();
    void* const block =
        memory.Reallocate(NULL, size, kMemoryCategoryArray, kMemoryAlignment, kMemoryCategoryArray);
    if (block == NULL) {
        throw std::bad_alloc();
    }
    memset(block, 0, size);
    Slot* const formerSlots = slots;
    const UInt32 formerSlotCount = slotCount;
    slots = static_cast<Slot*>(block);
    slotCount = newSlotCount;
    for (UInt32 i = 0; i < formerSlotCount; ++i) {
        if (formerSlots[i].used) {
            *SlotOf(formerSlots[i].key) = formerSlots[i];
        }
    }
    memory.Free(formerSlots);
}

}  // namespace Plinth
