#include "host/app/bisect.h"

#include <algorithm>
#include <cstddef>
#include <filesystem>
#include <string>
#include <utility>
#include <vector>

#include "host/app/exit_status.h"
#include "host/app/loaded_scene.h"
#include "host/app/places.h"
#include "host/app/trial.h"
#include "host/scene/check.h"
#include "host/scene/error.h"
#include "host/scene/reduce.h"
#include "host/scene/scramble.h"
#include "kta/text.h"
#include "kta/whole_file.h"

namespace maxhost::app {
namespace {

using scene::PartKind;
using scene::Scene;

std::string Describe(const scene::SceneSize& size) {
    std::vector<std::string> parts = {kta::Counted(size.nodes, "node")};
    const auto add = [&](std::size_t count, const char* what) {
        if (count > 0) {
            parts.push_back(kta::Counted(count, what));
        }
    };
    add(size.modifiers, "modifier");
    add(size.materials, "material");
    add(size.keys, "key");
    add(size.morphChannels, "morph channel");
    add(size.faces, "face");
    return kta::Joined(parts);
}

class Search {
  public:
    Search(const Options& options, const Scene& scene, const Interrupts& interrupts,
           Console& console)
        : options_(options),
          interrupts_(interrupts),
          console_(console),
          room_(TemporaryRoom()),
          trial_(options, room_.Path()),
          scene_(scene) {}

    Scene Run();

  private:
    void TryWhole();
    bool IsOver() const { return tries_ >= options_.tries || interrupts_.Status() != 0; }
    bool StillFails(const Scene& candidate);
    bool Reduce(const PartKind& kind);
    void Scramble();
    void Say(const std::string& text) { console_.Note(SceneName(options_.scene), text); }

    const Options& options_;
    const Interrupts& interrupts_;
    Console& console_;
    const kta::PrivateDirectory room_;
    const Trial trial_;
    Scene scene_;  // the smallest so far
    TrialResult whole_;
    double patience_ = 0;  // seconds a try
    int tries_ = 0;
};

void Search::TryWhole() {
    const std::string name = SceneName(options_.scene);
    whole_ = trial_.Run(scene_, options_.trySeconds);
    ++tries_;
    if (interrupts_.Status() != 0) {
        throw Failure(interrupts_.Status(), name, "interrupted");
    }
    if (!whole_.fails) {
        throw Failure(kExitRefused, name,
                      "its export does not fail and checks well, expected one that fails");
    }
    if (whole_.isRefused) {
        throw Failure(kExitRefused, name,
                      "its export is refused, expected one that fails: " + whole_.shown);
    }
    Say(whole_.shown);
    // A smaller scene takes no longer, but for what the machine does beside it.
    constexpr double kTimes = 10, kLeast = 5;
    patience_ = std::min<double>(options_.trySeconds, std::max(kLeast, kTimes * whole_.seconds));
}

bool Search::StillFails(const Scene& candidate) {
    try {
        scene::Check(candidate);
    } catch (const scene::SceneError&) {
        return false;  // no scene any more
    }
    ++tries_;
    return trial_.Run(candidate, patience_).kind == whole_.kind && interrupts_.Status() == 0;
}

// Leaves out what parts of the kind can go; whether there are any.
bool Search::Reduce(const PartKind& kind) {
    std::size_t count = kind.count(scene_);
    const std::size_t before = count;
    bool isSmaller = false;
    for (std::size_t size = count; size > 0 && !IsOver(); size /= 2) {
        for (std::size_t begin = 0; begin < count && !IsOver();) {
            std::vector<bool> gone(count);
            const std::size_t end = std::min(count, begin + size);
            std::fill(gone.begin() + static_cast<std::ptrdiff_t>(begin),
                      gone.begin() + static_cast<std::ptrdiff_t>(end), true);
            Scene candidate = kind.without(scene_, gone);
            if (StillFails(candidate)) {
                scene_ = std::move(candidate);
                isSmaller = true;
                count = kind.count(scene_);
            } else {
                begin = end;
            }
        }
    }
    if (isSmaller) {
        Say(kta::Counted(static_cast<std::size_t>(tries_), "export") + ": " +
            std::to_string(count) + " of " + std::to_string(before) + " " + kind.name +
            " stay, and with them " + Describe(scene::SizeOf(scene_)));
    }
    return isSmaller;
}

// Scrambles all that the failure does not need as it is. Who interrupts it gets nothing that was
// to be hidden.
void Search::Scramble() {
    Scene all = scene_;
    scene::Scramble(all);
    if (StillFails(all)) {
        scene_ = std::move(all);
        return;
    }
    std::vector<std::string> kept;
    for (const scene::ScrambleKind& kind : scene::ScrambleKinds()) {
        if (interrupts_.Status() != 0) {
            break;
        }
        Scene candidate = scene_;
        kind.scramble(candidate);
        if (StillFails(candidate)) {
            scene_ = std::move(candidate);
        } else {
            kept.emplace_back(kind.name);
        }
    }
    if (interrupts_.Status() != 0) {
        scene_ = std::move(all);
        Say("interrupted: scrambled whole, whether it still fails was not tried");
        return;
    }
    Say("not scrambled, since the failure needs it as it is: " + kta::Joined(kept));
}

Scene Search::Run() {
    const std::string before = Describe(scene::SizeOf(scene_));
    TryWhole();
    for (bool isSmaller = true; isSmaller && !IsOver();) {
        isSmaller = false;
        for (const PartKind& kind : scene::PartKinds()) {
            isSmaller = Reduce(kind) || isSmaller;
        }
    }
    const bool isCutShort = IsOver();
    if (options_.scramble) {
        Scramble();
    }
    if (interrupts_.Status() != 0) {
        Say("interrupted: a smaller scene may fail as well");
    } else if (isCutShort) {
        Say("ended after " + kta::Counted(static_cast<std::size_t>(tries_), "export") +
            ": a smaller scene may fail as well (--tries allows more)");
    }
    if (!options_.quiet && !options_.json) {
        console_.Print("fails in the same way: " + whole_.shown);
        console_.Print("what is left: " + Describe(scene::SizeOf(scene_)) + "; before: " + before +
                       "; " + kta::Counted(static_cast<std::size_t>(tries_), "export"));
    }
    return std::move(scene_);
}

}  // namespace

Scene Bisect(const Options& options, const Scene& scene, Interrupts& interrupts, Console& console) {
    interrupts.PressCancel();
    return Search(options, scene, interrupts, console).Run();
}

}  // namespace maxhost::app
