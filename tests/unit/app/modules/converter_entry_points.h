// The entry points of a converter library, which do nothing.
#pragma once

#ifdef _WIN32
#define TEST_EXPORT extern "C" __declspec(dllexport)
#else
#define TEST_EXPORT extern "C" __attribute__((visibility("default")))
#endif

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
