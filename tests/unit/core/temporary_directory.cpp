#include "temporary_directory.h"

#include <gtest/gtest.h>

#include <fstream>
#include <iterator>

#ifdef _WIN32
#include <process.h>
#else
#include <unistd.h>
#endif

namespace fs = std::filesystem;

namespace {

long ProcessNumber() {
#ifdef _WIN32
    return _getpid();
#else
    return getpid();
#endif
}

}  // namespace

// Programs may run at the same time, and so may several runs of one test.
TemporaryDirectory::TemporaryDirectory() {
    const testing::TestInfo& test = *testing::UnitTest::GetInstance()->current_test_info();
    path_ =
        fs::path(testing::TempDir()) / (std::string("core_test_") + test.test_suite_name() + "_" +
                                        test.name() + "_" + std::to_string(ProcessNumber()));
    fs::remove_all(path_);
    fs::create_directories(path_);
}

TemporaryDirectory::~TemporaryDirectory() {
    std::error_code ignored;
    fs::remove_all(path_, ignored);
}

std::string ReadBytes(const std::string& path) {
    std::ifstream file(path, std::ios::binary);
    EXPECT_TRUE(file.is_open()) << path;
    return std::string(std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>());
}

void WriteBytes(const std::string& path, const std::string& bytes) {
    std::ofstream file(path, std::ios::binary);
    file << bytes;
    ASSERT_TRUE(file.good()) << path;
}

std::string OnDisk(const std::string& text) {
    std::string bytes;
    for (char character : text) {
#ifdef _WIN32
        if (character == '\n') {
            bytes += '\r';
        }
#endif
        bytes += character;
    }
    return bytes;
}
