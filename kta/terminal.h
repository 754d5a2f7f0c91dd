// Colours on terminals.
#pragma once

#include <string>
#include <string_view>

namespace kta {

enum class ColorMode { automatic, always, never };
enum class StandardStream { out = 1, error = 2 };

bool IsTerminal(StandardStream stream);

// Whether what goes to the stream is coloured: in the mode `automatic` where it is a terminal, the
// variable NO_COLOR is empty or not set (no-color.org) and TERM is not dumb. On Windows the console
// is told to follow escape sequences; one that cannot gets none.
bool ShowsColors(ColorMode mode, StandardStream stream, bool isTerminal);

// Escape sequences of ECMA-48 (SGR).
enum class Style { plain, bold, good, caution, bad, hint };

// The text as it stands, or in the style's colour where `isColored`.
std::string Styled(Style style, std::string_view text, bool isColored);

}  // namespace kta
