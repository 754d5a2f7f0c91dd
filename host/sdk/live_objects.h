// The host's objects and interfaces that a plug-in holds: objects made by NewDefaultStdMat or by a
// conversion, which it deletes with DeleteMe(), and interfaces, which it releases.
#pragma once

#include <unordered_map>

namespace maxhost {

// How many such objects live now; a test finds leaks with it.
int LiveObjectCount();

// A member of every such object; counts it.
class LiveObject {
  public:
    LiveObject();
    ~LiveObject();
    LiveObject(const LiveObject&) = delete;
    LiveObject& operator=(const LiveObject&) = delete;
};

// Of the process so far: interfaces handed out, those that were not released (also where the scene
// that they belong to is closed), and releases of what was not handed out or had been released.
struct LoanCounts {
    int lent = 0;
    int outstanding = 0;
    int wrongReleases = 0;
};
LoanCounts CountLoans();

// The interfaces that one object has handed out, each as often as it was asked for.
class Loans {
  public:
    void Lend(const void* lent);
    // False, and a wrong release, for what is not lent.
    bool TakeBack(const void* lent);

  private:
    std::unordered_map<const void*, int> lent_;
};

}  // namespace maxhost
