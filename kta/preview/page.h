// A page that shows an actor and its motion in a browser: one file that needs nothing else.
#pragma once

#include <functional>
#include <string>
#include <vector>

#include "kta/glb.h"

namespace kta {

struct PageSource {
    const Reading* actor = nullptr;   // with a file of the kind; so has the motion
    const Reading* motion = nullptr;  // may be null
    std::string title;                // the actor file's name, as are these for the issues
    std::string actorName;
    std::string motionName;
    bool withCollision = false;
    FindTexture findTexture{};  // without it none is shown
};

// The page, in UTF-8. The same source gives the same bytes. What of the model cannot be shown goes
// to `warnings`, a line each.
std::string EncodePage(const PageSource& source, std::vector<std::string>& warnings);

// What the page tells beside the model, as JSON: nodes, materials, skins, morphs, tracks, issues.
std::string PageDetails(const PageSource& source);

}  // namespace kta
