// The host's side of the SDK work-alike: everything that 3ds Max itself would decide (the open
// scene, its directories, the progress bar, the cancel button). Plug-ins never see this header;
// they reach the same object through GetCOREInterface().
#pragma once

#include <csignal>
#include <memory>
#include <string>
#include <vector>

#include "host/scene/scene.h"

class INode;
class Interface;

namespace maxhost {

// Told of the plug-in's progress bar; every function is called on the exporting thread.
class ProgressObserver {
  public:
    virtual ~ProgressObserver() = default;
    virtual void OnStart(const std::string& title) = 0;  // empty: the plug-in gave no title
    virtual void OnUpdate(int percent) = 0;
    // How much of the work since the last update is done, 0 to 1, as far as it consists of reading
    // meshes. Never falls between two updates.
    virtual void OnWork(double) {}
    virtual void OnEnd() = 0;
};

class Host {
  public:
    // The one host of the process; GetCOREInterface() is its Interface.
    static Host& Instance();

    Interface* GetInterface();

    // Replaces the open scene by the objects of `description`, which must hold to the scene
    // description's rules (see scene::Check). Nodes of the former scene are gone afterwards.
    void OpenScene(scene::Scene description);
    void CloseScene();

    // The open scene, until the next is opened or this one closed.
    const scene::Scene& Description() const;
    // The open scene's nodes in the order of the description; owned by the host.
    const std::vector<INode*>& Nodes() const;
    void Select(const std::vector<INode*>& nodes);

    // Gives back the memory of the open scene's SDK meshes, which are empty from then on: once it
    // is exported, nobody looks at them any more. The description keeps its own.
    void ReleaseMeshes();

    // Of the scenes opened from now on, each node remembers one transform with the range of times
    // over which it holds, as in 3ds Max. Otherwise nodes with children remember those of many
    // times, for plug-ins that ask node by node.
    void KeepOneTransformANode(bool keepOne);

    void SetPlugInDirs(std::vector<std::string> dirs);
    void SetDir(int which, std::string dir);  // `which` is an APP_..._DIR of the SDK

    void SetProgressObserver(ProgressObserver* observer);  // not owned; null: none
    // Cancel is pressed at the n-th ProgressUpdate counted from this call on, and stays pressed
    // until the next call; 0: never.
    void CancelAtUpdate(int n);
    // Cancel is pressed as well once the flag, which a signal handler may set, is not 0; the
    // plug-in learns it from its next GetCancel. Not owned; null: none.
    void SetCancelFlag(const volatile std::sig_atomic_t* flag);

    Host(const Host&) = delete;
    Host& operator=(const Host&) = delete;

  private:
    Host();
    ~Host();
    class Implementation;
    std::unique_ptr<Implementation> implementation_;
};

}  // namespace maxhost
