// The entry points of a converter library, which do nothing.
#pragma once

#include "tests/support/export.h"

TEST_EXPORT void InitSpecialHalden(const char*, const char*, bool) {
}
TEST_EXPORT void WriteKTActorFile(const char*) {
}
TEST_EXPORT void EndSpecialHalden() {
}
#ifndef WITHOUT_MOTION
TEST_EXPORT void WriteKTMotionFile(const char*) {
}
#endif
