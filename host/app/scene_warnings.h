// What a scene will lose in the files by their form alone.
#pragma once

#include <string>
#include <vector>

#include "host/scene/scene.h"

namespace maxhost::app {

// A line each, where there is cause: node names that are longer than the field that holds them, and
// names that several nodes have, as far as the field holds them. At most five names a line, each
// shortened and in quotes. Linear.
std::vector<std::string> NameWarnings(const scene::Scene& scene);

}  // namespace maxhost::app
