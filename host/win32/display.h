// Whether a window can be shown at all.
#pragma once

namespace win32 {

// Windows only. False where no window can be made: a session without a desktop, Wine without an X
// display. Makes a window that is never shown, and destroys it.
bool HasDisplay();

}  // namespace win32
