#include "host/sdk/time_settings.h"

#include <maxapi.h>

#include <algorithm>

namespace {

int frameRate = 30;
int ticksPerFrame = 160;

void SetBoth(int& setting, int& other, int value) {
    if (value >= 1) {
        setting = value;
        other = std::max(1, TIME_TICKSPERSEC / value);
    }
}

}  // namespace

int GetFrameRate() {
    return frameRate;
}

void SetFrameRate(int rate) {
    SetBoth(frameRate, ticksPerFrame, rate);
}

int GetTicksPerFrame() {
    return ticksPerFrame;
}

void SetTicksPerFrame(int ticks) {
    SetBoth(ticksPerFrame, frameRate, ticks);
}

void maxhost::SetTimeSettings(int rate, int ticks) {
    frameRate = rate;
    ticksPerFrame = ticks;
}
