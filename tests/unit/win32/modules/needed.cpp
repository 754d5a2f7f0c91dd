#include "tests/unit/win32/modules/export.h"

TEST_EXPORT int Needed() {
    return 41;
}
