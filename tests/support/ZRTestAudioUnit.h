#pragma once

#include <zrbase/host/audio/ZRAudioUnit.h>

#include <map>
#include <utility>
#include <vector>

// An audio unit for tests: stream formats set per scope and element, a status to answer for elements it has no
// format for, and every scheduled parameter event kept in order.
class ZRTestAudioUnit : public ZRAudioUnit {
public:
    void setStreamFormat(AudioUnitScope scope, AudioUnitElement element, const AudioStreamBasicDescription& format);
    // The status answered for a scope and element without a format (the default is the host's "invalid element").
    void setMissingFormatStatus(OSStatus status) { _missingFormatStatus = status; }

    OSStatus getStreamFormat(
        AudioUnitScope scope, AudioUnitElement element, AudioStreamBasicDescription& format) const override;
    OSStatus scheduleParameters(std::span<const AudioUnitParameterEvent> events) override;

    const std::vector<AudioUnitParameterEvent>& scheduledEvents() const { return _events; }

private:
    std::map<std::pair<AudioUnitScope, AudioUnitElement>, AudioStreamBasicDescription> _formats;
    OSStatus _missingFormatStatus = -10877;
    std::vector<AudioUnitParameterEvent> _events;
};
