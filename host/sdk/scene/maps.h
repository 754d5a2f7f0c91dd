// Maps of the scene's materials.
#pragma once

#include <imtl.h>

#include <memory>
#include <vector>

#include "host/scene/scene.h"

namespace maxhost {

// The maps of one material, with those that stand inside of them.
class MapSlots {
  public:
    explicit MapSlots(const std::vector<scene::MapSlot>& slots);
    ~MapSlots();

    // One more than the highest slot with a map.
    int Count() const { return static_cast<int>(slots_.size()); }
    // Any number may be asked for; what has no map is null, off and 1.
    Texmap* Get(int slot) const;
    bool IsEnabled(int slot) const;
    float Amount(int slot) const;

    class Entry;  // holds one map

  private:
    struct Slot {
        bool enabled = false;
        float amount = 1;
        std::unique_ptr<Entry> map;
    };

    const Slot* Find(int slot) const;  // null: without map

    std::vector<Slot> slots_;
};

}  // namespace maxhost
