// The search for the least of a scene at which its export fails.
#pragma once

#include "host/app/console.h"
#include "host/app/options.h"
#include "host/scene/scene.h"

namespace maxhost::app {

// Exports the scene, in processes of their own, without this part and without that, and gives the
// smallest scene found whose export fails in the same way as that of the whole one (see
// TrialResult): delta debugging (Zeller and Hildebrandt, "Simplifying and Isolating
// Failure-Inducing Input", 2002), kind of parts by kind, from halves down to single ones, until no
// single part can go. With --scramble it is scrambled as far as it still fails. Lines tell how it
// goes. The same scene and options give the same result, unless an export fails by chance. Ends
// early, with what is found so far, after --tries exports and after an interrupt. Throws
// Failure(kExitRefused) where the whole scene's export does not fail, or is refused.
scene::Scene Bisect(const Options& options, const scene::Scene& scene, Interrupts& interrupts,
                    Console& console);

}  // namespace maxhost::app
