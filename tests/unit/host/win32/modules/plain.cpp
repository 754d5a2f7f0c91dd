// Without an entry point of its own and without resources; needs another library.
#include "tests/support/export.h"

TEST_EXPORT int Needed();
TEST_EXPORT int Plain() {
    return Needed() + 1;
}
