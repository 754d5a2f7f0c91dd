// Frame rate and length of a frame, as the SDK's global functions give them.
#pragma once

namespace maxhost {

// Sets both, independent of each other; both at least 1.
void SetTimeSettings(int frameRate, int ticksPerFrame);

}  // namespace maxhost
