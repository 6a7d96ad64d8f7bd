#include "support/ZRTestAudioUnit.h"

void ZRTestAudioUnit::setStreamFormat(
    AudioUnitScope scope, AudioUnitElement element, const AudioStreamBasicDescription& format)
{
    _formats[{ scope, element }] = format;
}

OSStatus ZRTestAudioUnit::getStreamFormat(
    AudioUnitScope scope, AudioUnitElement element, AudioStreamBasicDescription& format) const
{
    const auto found = _formats.find({ scope, element });
    if (found == _formats.end())
        return _missingFormatStatus;
    format = found->second;
    return noErr;
}

OSStatus ZRTestAudioUnit::scheduleParameters(std::span<const AudioUnitParameterEvent> events)
{
    _events.insert(_events.end(), events.begin(), events.end());
    return noErr;
}
