// Modifier stacks.
#pragma once

#include <modstack.h>

#include <memory>
#include <vector>

#include "host/sdk/objects.h"

namespace maxhost {

// A derived object with `modifiers`, top first, above `below`. Both must outlive it.
std::unique_ptr<SceneObject> MakeDerivedObject(const std::vector<scene::Modifier>& modifiers,
                                               Object* below);

}  // namespace maxhost
