#include "kta/preview/page.h"

#include <cstdint>
#include <span>
#include <string_view>

#include "kta/dump.h"
#include "kta/preview/texture.h"

// The page's files, which CMake puts into the program.
extern "C" {
#define PAGE_PART(symbol, name)         \
    extern const char symbol##_begin[]; \
    extern const char symbol##_end[];
#include "kta/page_parts.inc"
#undef PAGE_PART
}

namespace kta {
namespace {

struct PagePart {
    std::string_view name;
    std::string_view text;
};

const PagePart kPageParts[] = {
#define PAGE_PART(symbol, name) \
    {name, {symbol##_begin, static_cast<std::size_t>(symbol##_end - symbol##_begin)}},
#include "kta/page_parts.inc"
#undef PAGE_PART
};

std::string_view PartNamed(std::string_view name) {
    for (const PagePart& part : kPageParts) {
        if (part.name == name) {
            return part.text;
        }
    }
    return {};
}

}  // namespace

std::string EscapedForPage(std::string_view text) {
    std::string escaped;
    for (const char c : text) {
        switch (c) {
            case '&':
                escaped += "&amp;";
                break;
            case '<':
                escaped += "&lt;";
                break;
            case '>':
                escaped += "&gt;";
                break;
            case '"':
                escaped += "&quot;";
                break;
            default:
                escaped += c;
        }
    }
    return escaped;
}

// RFC 4648, section 4.
std::string Base64(std::span<const std::uint8_t> bytes) {
    constexpr char kDigits[] = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
    std::string text;
    text.reserve((bytes.size() + 2) / 3 * 4);
    for (std::size_t i = 0; i < bytes.size(); i += 3) {
        const std::size_t count = std::min<std::size_t>(3, bytes.size() - i);
        std::uint32_t three = 0;
        for (std::size_t k = 0; k < 3; ++k) {
            three = three << 8 | (k < count ? bytes[i + k] : 0u);
        }
        for (std::size_t k = 0; k < 4; ++k) {
            text += k <= count ? kDigits[three >> (18 - 6 * k) & 63] : '=';
        }
    }
    return text;
}

std::string FilledPage(std::string_view frame,
                       const std::map<std::string, std::string, std::less<>>& values) {
    const std::string_view text = PartNamed(frame);
    std::string page;
    for (std::size_t at = 0; at < text.size();) {
        const std::size_t open = std::min(text.find("{{", at), text.size());
        page += text.substr(at, open - at);
        if (open == text.size()) {
            break;
        }
        const std::size_t close = text.find("}}", open);
        const std::string_view name = text.substr(open + 2, close - open - 2);
        const auto value = values.find(name);
        page += value != values.end() ? value->second
                : name == "licence"   ? EscapedForPage(PartNamed("copyright"))
                                      : std::string(PartNamed(name));
        at = close + 2;
    }
    return page;
}

std::string EncodePage(const PageSource& source, std::vector<std::string>& warnings) {
    GlbOptions options;
    options.withCollision = source.withCollision;
    options.findTexture = source.findTexture;
    options.embedTextures = true;
    options.convertToPng = ImageFileAsPng;
    options.withNumbers = true;
    const File* const motion = source.motion == nullptr ? nullptr : &*source.motion->file;
    const std::string glb = Base64(EncodeGlb(*source.actor->file, motion, options, warnings));
    return FilledPage("page.html", {{"title", EscapedForPage(ToUtf8(source.title))},
                                    {"details", PageDetails(source)},
                                    {"glb", glb}});
}

}  // namespace kta
