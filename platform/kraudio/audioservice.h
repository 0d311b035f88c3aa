#pragma once

#include "platform_api.h"

// Gains of the microphone's path, in this order.
struct krMicConfig
{
    float opGain;
    float pgaGain;
    float uplinkGain;
};

namespace kraudio {

// Client of the audio service. GUI thread only.
class PLATFORM_API AudioService
{
public:
    static AudioService *instance();

    // Analog gain of the microphone, in dB; the page gives both arguments the same value.
    void setMicAnalogGain(float first, float second);

    void configMic(krMicConfig config);
};

} // namespace kraudio
