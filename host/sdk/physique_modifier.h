// The Physique modifier.
#pragma once

#include "host/sdk/modifiers.h"

namespace maxhost {

// Gives an IPhysiqueExport for I_PHYINTERFACE; that, its contexts and their vertices are lent (see
// CountLoans). A rigid vertex of the description is one in Physique as well; a blended one is
// deformable there, and shows what its conversion gives. The description must outlive it.
std::unique_ptr<SceneModifier> MakePhysiqueModifier(const scene::Physique& description,
                                                    const StackPlace& place);

}  // namespace maxhost
