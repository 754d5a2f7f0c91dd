#include "tests/unit/assimp_import/temporary_files.h"

#include <stdlib.h>

#include <fstream>
#include <iterator>
#include <stdexcept>

TemporaryFiles::TemporaryFiles() {
    std::string name = (std::filesystem::temp_directory_path() / "assimp_import_XXXXXX").string();
    if (!mkdtemp(name.data())) {
        throw std::runtime_error("no temporary folder");
    }
    folder_ = name;
}

TemporaryFiles::~TemporaryFiles() {
    std::filesystem::remove_all(folder_);
}

std::string TemporaryFiles::Write(const std::string& name, const std::string& content) const {
    const std::filesystem::path path = folder_ / name;
    std::ofstream(path, std::ios::binary) << content;
    return path.string();
}

std::string ReadFile(const std::filesystem::path& path) {
    std::ifstream stream(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(stream), {}};
}
