// Whom this library's dialogs and message boxes are shown to.
#pragma once

#include "host/win32/user.h"

namespace win32 {

User& CurrentUser();

}  // namespace win32
