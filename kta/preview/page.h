// A page that shows an actor and its motion in a browser: one file that needs nothing else.
#pragma once

#include <cstdint>
#include <functional>
#include <map>
#include <span>
#include <string>
#include <string_view>
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

// ---------------------------------------------------------------- for pages

// The frame of that name, one of the page's files, with each {{name}} replaced: by the value given,
// or by the page's file of that name. "licence" is that of the viewer.
std::string FilledPage(std::string_view frame,
                       const std::map<std::string, std::string, std::less<>>& values);

// As text of the page, which no part of it ends.
std::string EscapedForPage(std::string_view text);

std::string Base64(std::span<const std::uint8_t> bytes);

}  // namespace kta
