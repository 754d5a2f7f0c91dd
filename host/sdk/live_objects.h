// The objects that belong to the plug-in: made by NewDefaultStdMat or by a conversion, deleted by
// the plug-in with DeleteMe().
#pragma once

namespace maxhost {

// How many of them live now; a test finds leaks with it.
int LiveObjectCount();

// A member of every such object; counts it.
class LiveObject {
  public:
    LiveObject();
    ~LiveObject();
    LiveObject(const LiveObject&) = delete;
    LiveObject& operator=(const LiveObject&) = delete;
};

}  // namespace maxhost
