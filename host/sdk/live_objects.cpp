#include "host/sdk/live_objects.h"

namespace maxhost {
namespace {
int liveObjectCount = 0;
}

int LiveObjectCount() {
    return liveObjectCount;
}

LiveObject::LiveObject() {
    ++liveObjectCount;
}

LiveObject::~LiveObject() {
    --liveObjectCount;
}

}  // namespace maxhost
