#pragma once

#include <zrbase/host/audio/ZRCoreAudioTypes.h>
#include <zrbase/host/foundation/ZRExport.h>

#include <span>

// The part of an audio unit the library talks to: the stream format of a scope and element, and parameter events
// scheduled for the next render. Units that host real processing implement it; the calls answer host statuses.
class ZR_EXPORT ZRAudioUnit {
public:
    virtual ~ZRAudioUnit();

    // Writes the stream format of the scope and element into `format`; a non-zero status when the unit has no
    // such scope or element.
    virtual OSStatus getStreamFormat(
        AudioUnitScope scope, AudioUnitElement element, AudioStreamBasicDescription& format) const = 0;
    // Hands the unit parameter changes (immediate or ramped) to apply from its next render call on.
    virtual OSStatus scheduleParameters(std::span<const AudioUnitParameterEvent> events) = 0;
};
