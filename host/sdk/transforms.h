// Transform controllers of nodes.
#pragma once

#include <memory>

#include "host/sdk/controllers.h"

namespace maxhost {

// Local() gives the node's matrix relative to its parent. The description must outlive the
// controller.
std::unique_ptr<MatrixControl> MakeTransformControl(const scene::Transform& description);

}  // namespace maxhost
