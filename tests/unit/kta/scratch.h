// Files in the tests' scratch directory.
#pragma once

#include <gtest/gtest.h>

#include <string>

#include "tests/support/temporary_directory.h"

namespace sample {

// A path there, of the running test's own.
inline std::string ScratchPath(const std::string& name) {
    const testing::TestInfo& test = *testing::UnitTest::GetInstance()->current_test_info();
    return std::string(KTA_SCRATCH) + "/" + test.test_suite_name() + "." + test.name() + "." + name;
}

// Writes the bytes to a new file at ScratchPath(name); returns that.
inline std::string Save(const std::string& name, const std::string& bytes) {
    const std::string path = ScratchPath(name);
    support::WriteFile(path, bytes);
    return path;
}

}  // namespace sample
