// The Skin modifier.
#pragma once

#include "host/sdk/modifiers.h"

namespace maxhost {

// Gives an ISkin for I_SKIN. The description must outlive it.
std::unique_ptr<SceneModifier> MakeSkinModifier(const scene::Skin& description,
                                                const StackPlace& place);

}  // namespace maxhost
