#include "kraudio/audioservice.h"

#include "bench/unit/audiostate.h"
#include "bench/unit/headunit.h"
#include "bench/unit/journal.h"

namespace kraudio {

using bench::journal;
using bench::unit;

namespace {

const QString kService = QStringLiteral("AudioService");

} // namespace

AudioService *AudioService::instance()
{
    static AudioService service;
    return &service;
}

void AudioService::setMicAnalogGain(float first, float second)
{
    journal().call(kService, QStringLiteral("setMicAnalogGain"),
                   {static_cast<double>(first), static_cast<double>(second)});
    unit().change()->audio.analogGain[0] = first;
    unit().change()->audio.analogGain[1] = second;
}

void AudioService::configMic(krMicConfig config)
{
    journal().call(kService, QStringLiteral("configMic"),
                   {static_cast<double>(config.opGain), static_cast<double>(config.pgaGain),
                    static_cast<double>(config.uplinkGain)});
    unit().change()->audio.microphone = config;
}

} // namespace kraudio
