#include "tests/support/export.h"

TEST_EXPORT int FunctionThatNobodyDefines();
TEST_EXPORT int Unresolved() {
    return FunctionThatNobodyDefines();
}
