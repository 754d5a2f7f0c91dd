// How far a plug-in is with reading a mesh, for the progress bar: 3ds Max's own bar moves once a
// node, and a single mesh may take most of an export.
#pragma once

#include <cstddef>
#include <cstdint>

namespace maxhost {

class ProgressObserver;

// An exporter has a mesh's normals built and then looks at the render vertex of every corner. One
// thread at a time.
class MeshReading {
  public:
    void Observe(ProgressObserver* observer) { observer_ = observer; }
    // Another step of the plug-in's bar begins.
    void Restart();
    // A mesh of so many corners is read.
    void Begin(std::size_t corners);
    void CountCorner() {
        if (--untilTold_ == 0) {
            Tell();
        }
    }

  private:
    void Tell();
    void Show();

    ProgressObserver* observer_ = nullptr;
    double begun_ = 0;  // corners of all meshes of this step so far
    double read_ = 0;   // of these
    double shown_ = 0;
    std::int64_t step_ = 0;  // corners from one telling to the next
    std::int64_t untilTold_ = 0;
};

inline MeshReading meshReading;

}  // namespace maxhost
