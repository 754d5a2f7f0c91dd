// The Morpher modifier; MorpherApi.h reads its channels.
#pragma once

#include "host/sdk/modifiers.h"

namespace maxhost {

// The description must outlive it.
std::unique_ptr<SceneModifier> MakeMorpherModifier(const scene::Morpher& description);

}  // namespace maxhost
