#define WITHOUT_MOTION
#include "tests/unit/app/modules/converter_entry_points.h"
