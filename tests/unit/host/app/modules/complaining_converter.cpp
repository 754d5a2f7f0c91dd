#include "tests/unit/host/app/modules/converter_entry_points.h"

TEST_EXPORT const char* SpecialHaldenFaults() {
    return "first complaint\nsecond complaint";
}
