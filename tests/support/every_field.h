// A scene that uses every field of every class, as text and as the plain data that the text means;
// and the comparison of two scenes.
#pragma once

#include <string>
#include <string_view>

#include "host/scene/scene.h"

extern const std::string_view kEveryField;

maxhost::scene::Scene EveryFieldScene();

// Where the scenes differ first, as in ".nodes[3].transform.kind.position"; empty when they do not.
std::string Difference(const maxhost::scene::Scene& a, const maxhost::scene::Scene& b);
