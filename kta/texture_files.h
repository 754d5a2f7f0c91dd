// Where the image files stand that an actor file names without directories.
#pragma once

#include <filesystem>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace kta {

class TextureFinder {
  public:
    // Looks into `beside`, if there is any, and then into each of `folders` and what these hold,
    // links to folders left out.
    TextureFinder(std::optional<std::filesystem::path> beside,
                  std::vector<std::filesystem::path> folders);

    // The regular file of that name, of which what stands before the last / or \ does not count. A
    // name that differs in capital letters A to Z alone is as good where there is no better one,
    // since the files come from systems that do not tell them apart. Of several files in a folder's
    // subfolders, the one that stands the least deep, and of those the first by the alphabet.
    std::optional<std::filesystem::path> Find(std::string_view textureFileName);

    // "no folder" or "in DIR, DIR".
    std::string WhereItLooks() const;

  private:
    // Files by their names in small letters, the best of each name first.
    using Index = std::map<std::string, std::vector<std::filesystem::path>, std::less<>>;

    const Index& IndexOf(std::size_t place);

    bool looksBeside_;
    std::vector<std::filesystem::path> places_;
    std::vector<std::optional<Index>> indexes_;  // of the places, made when first needed
};

}  // namespace kta
