// A scene that uses every field of every class: as text, and as the plain data that the text means.
#pragma once

#include <string_view>

#include "host/scene/scene.h"

extern const std::string_view kEveryField;

maxhost::scene::Scene EveryFieldScene();
