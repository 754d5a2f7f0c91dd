#include <MorpherApi.h>

#include "host/sdk/calls.h"
#include "host/sdk/scene/modifiers.h"

// The data that a MaxMorphChannel refers to.
class MorphChannelData {
  public:
    explicit MorphChannelData(const maxhost::scene::MorphChannel& description)
        : description_(description) {}

    const std::string& Name() const { return description_.name; }
    const std::vector<maxhost::scene::Vec3>& Points() const { return description_.points; }

  private:
    const maxhost::scene::MorphChannel& description_;
};

namespace maxhost {
namespace {

class MorpherModifier final : public SceneModifier {
  public:
    explicit MorpherModifier(const scene::Morpher& description)
        : SceneModifier(MR3_CLASS_ID),
          channels_(description.channels.begin(), description.channels.end()) {}

    const std::vector<MorphChannelData>& Channels() const { return channels_; }

  private:
    const std::vector<MorphChannelData> channels_;
};

// Null for any other modifier.
const MorpherModifier* ToMorpher(Modifier* modifier) {
    return dynamic_cast<const MorpherModifier*>(modifier);
}

}  // namespace

std::unique_ptr<SceneModifier> MakeMorpherModifier(const scene::Morpher& description) {
    return std::make_unique<MorpherModifier>(description);
}

}  // namespace maxhost

const MCHAR* MaxMorphChannel::GetName() const {
    return data_ != nullptr ? data_->Name().c_str() : nullptr;
}

int MaxMorphChannel::NumMorphPoints() const {
    return data_ != nullptr ? static_cast<int>(data_->Points().size()) : 0;
}

Point3 MaxMorphChannel::GetMorphPoint(int i) const {
    ++maxhost::calls.morphPoints;
    if (i < 0 || i >= NumMorphPoints()) {
        return Point3(0, 0, 0);
    }
    const maxhost::scene::Vec3& point = data_->Points()[i];
    return Point3(point[0], point[1], point[2]);
}

bool MaxMorphModifier::IsValid() const {
    return maxhost::ToMorpher(modifier_) != nullptr;
}

int MaxMorphModifier::NumMorphChannels() const {
    const auto* morpher = maxhost::ToMorpher(modifier_);
    return morpher != nullptr ? static_cast<int>(morpher->Channels().size()) : 0;
}

MaxMorphChannel MaxMorphModifier::GetMorphChannel(int i) const {
    const bool exists = i >= 0 && i < NumMorphChannels();
    return MaxMorphChannel(exists ? &maxhost::ToMorpher(modifier_)->Channels()[i] : nullptr);
}
