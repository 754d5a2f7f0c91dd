#include "host/sdk/scene/maps.h"

#include <stdmat.h>

#include <algorithm>
#include <string>

namespace maxhost {

class MapSlots::Entry {
  public:
    virtual ~Entry() = default;
    virtual Texmap* Get() = 0;
};

namespace {

std::unique_ptr<MapSlots::Entry> MakeMap(const scene::Map& description);

Class_ID ToClassId(const scene::Map& description) {
    if (const auto* other = std::get_if<scene::OtherMap>(&description.kind)) {
        return Class_ID(other->classId[0], other->classId[1]);
    }
    return Class_ID(BMTEX_CLASS_ID, 0);
}

// Class and sub-maps, for any kind of map.
template <class Base>
class DescribedMap : public Base, public MapSlots::Entry {
  public:
    explicit DescribedMap(const scene::Map& description) : classId_(ToClassId(description)) {
        subMaps_.reserve(description.subMaps.size());
        for (const auto& subMap : description.subMaps) {
            subMaps_.push_back(subMap ? MakeMap(*subMap) : nullptr);
        }
    }

    Texmap* Get() override { return this; }

    Class_ID ClassID() override { return classId_; }
    // Nothing in a map varies with time.
    void Update(TimeValue, Interval&) override {}
    int NumSubTexmaps() override { return static_cast<int>(subMaps_.size()); }
    Texmap* GetSubTexmap(int i) override {
        return i >= 0 && i < NumSubTexmaps() && subMaps_[i] ? subMaps_[i]->Get() : nullptr;
    }

  private:
    Class_ID classId_;
    std::vector<std::unique_ptr<MapSlots::Entry>> subMaps_;  // null: an empty slot
};

class Coordinates final : public StdUVGen {
  public:
    explicit Coordinates(const scene::BitmapMap& bitmap)
        : uOffset_(bitmap.uOffset),
          vOffset_(bitmap.vOffset),
          uTiling_(bitmap.uTiling),
          vTiling_(bitmap.vTiling),
          angle_(bitmap.angle) {}

    void Update(TimeValue, Interval&) override {}
    float GetUOffs(TimeValue) override { return uOffset_; }
    float GetVOffs(TimeValue) override { return vOffset_; }
    float GetUScl(TimeValue) override { return uTiling_; }
    float GetVScl(TimeValue) override { return vTiling_; }
    float GetWAng(TimeValue) override { return angle_; }

  private:
    float uOffset_, vOffset_, uTiling_, vTiling_, angle_;
};

using OtherMap = DescribedMap<Texmap>;

class Bitmap final : public DescribedMap<BitmapTex> {
  public:
    Bitmap(const scene::Map& description, const scene::BitmapMap& bitmap)
        : DescribedMap(description),
          file_(bitmap.file),
          hasCoordinates_(bitmap.coordinates),
          coordinates_(bitmap) {}

    MCHAR* GetMapName() override { return file_.data(); }
    StdUVGen* GetUVGen() override { return hasCoordinates_ ? &coordinates_ : nullptr; }

  private:
    std::string file_;
    bool hasCoordinates_;
    Coordinates coordinates_;
};

std::unique_ptr<MapSlots::Entry> MakeMap(const scene::Map& description) {
    if (const auto* bitmap = std::get_if<scene::BitmapMap>(&description.kind)) {
        return std::make_unique<Bitmap>(description, *bitmap);
    }
    // Who meets the class id of bitmaps takes the map for one.
    if (ToClassId(description) == Class_ID(BMTEX_CLASS_ID, 0)) {
        return std::make_unique<Bitmap>(description,
                                        scene::BitmapMap{.file = "", .coordinates = false});
    }
    return std::make_unique<OtherMap>(description);
}

}  // namespace

MapSlots::MapSlots(const std::vector<scene::MapSlot>& slots) {
    int highest = -1;
    for (const scene::MapSlot& slot : slots) {
        highest = std::max(highest, slot.slot);
    }
    slots_.resize(static_cast<std::size_t>(highest + 1));
    for (const scene::MapSlot& slot : slots) {
        slots_[slot.slot] = {slot.enabled, slot.amount, MakeMap(*slot.map)};
    }
}

MapSlots::~MapSlots() = default;

Texmap* MapSlots::Get(int slot) const {
    const Slot* found = Find(slot);
    return found != nullptr ? found->map->Get() : nullptr;
}

bool MapSlots::IsEnabled(int slot) const {
    const Slot* found = Find(slot);
    return found != nullptr && found->enabled;
}

float MapSlots::Amount(int slot) const {
    const Slot* found = Find(slot);
    return found != nullptr ? found->amount : 1.0f;
}

const MapSlots::Slot* MapSlots::Find(int slot) const {
    return slot >= 0 && slot < Count() && slots_[slot].map ? &slots_[slot] : nullptr;
}

}  // namespace maxhost
