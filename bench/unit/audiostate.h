#pragma once

#include "kraudio/audioservice.h"

namespace bench {

// Gains that the audio service was last told.
struct AudioState
{
    float analogGain[2] = {0.0f, 0.0f};
    krMicConfig microphone = {0.0f, 0.0f, 0.0f};
};

} // namespace bench
