#include "tests/unit/app/modules/converter_entry_points.h"
