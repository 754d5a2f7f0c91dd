#include "tests/support/export.h"

TEST_EXPORT int Needed() {
    return 41;
}
