// A converter that counts its calls and needs no memory.
#define EXPORTED extern "C" __attribute__((visibility("default")))

// InitSpecialHalden, WriteKTActorFile, WriteKTMotionFile, EndSpecialHalden.
extern "C" {
__attribute__((visibility("default"))) int converterCalls[4] = {};
}

EXPORTED void InitSpecialHalden(const char*, const char*, bool) {
    ++converterCalls[0];
}

EXPORTED void WriteKTActorFile(const char*) {
    ++converterCalls[1];
}

EXPORTED void WriteKTMotionFile(const char*) {
    ++converterCalls[2];
}

EXPORTED void EndSpecialHalden() {
    ++converterCalls[3];
}
