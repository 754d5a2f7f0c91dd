// Transform controllers of nodes.
#pragma once

#include <memory>

#include "host/sdk/controllers.h"

namespace maxhost {

// Local() gives the node's matrix relative to its parent. The description, and the links to which
// the controller is added, must outlive it.
std::unique_ptr<MatrixControl> MakeTransformControl(const scene::Transform& description,
                                                    SceneLinks& links);

}  // namespace maxhost
