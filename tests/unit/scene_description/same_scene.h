// Compares plain-data scenes field by field, floats by their bits, shared data by what it holds.
#pragma once

#include <string>

#include "host/scene/scene.h"

// Where the scenes differ first, as in ".nodes[3].transform.kind.position"; empty when they do not.
std::string Difference(const maxhost::scene::Scene& a, const maxhost::scene::Scene& b);
