// Controllers whose Bezier keys the format can hold.
#ifndef SCENE_BEZIER_KEYS_H
#define SCENE_BEZIER_KEYS_H

#include <max.h>

#include <istdplug.h>

// False for null.
bool IsBezierFloat(Control* controller);

// The keys of a Bezier float controller (they are IBezFloatKey) and of a Bezier scale controller
// (IBezScaleKey); null for any other controller and for none.
IKeyControl* BezierFloatKeys(Control* controller);
IKeyControl* BezierScaleKeys(Control* controller);

// The keys of the three axes of a position or rotation controller. False where the controller is
// null or one of the axes is not a Bezier float controller.
bool FindAxisKeys(Control* controller, IKeyControl* axes[3]);

#endif
