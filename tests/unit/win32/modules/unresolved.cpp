#include "tests/unit/win32/modules/export.h"

TEST_EXPORT int FunctionThatNobodyDefines();
TEST_EXPORT int Unresolved() {
    return FunctionThatNobodyDefines();
}
