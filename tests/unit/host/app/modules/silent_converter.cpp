#include "tests/unit/host/app/modules/converter_entry_points.h"
