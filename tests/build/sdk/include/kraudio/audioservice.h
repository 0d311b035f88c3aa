#pragma once

struct krMicConfig
{
    float opGain;
    float pgaGain;
    float uplinkGain;
};

namespace kraudio {

class AudioService
{
public:
    static AudioService *instance();
    void setMicAnalogGain(float, float);
    void configMic(krMicConfig);
};

} // namespace kraudio
