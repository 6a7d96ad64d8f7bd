#pragma once

#include <zrbase/core/ZRErrorFwd.h>
#include <zrbase/host/audio/ZRCoreAudioTypes.h>
#include <zrbase/host/foundation/ZRExport.h>

#include <cstdint>
#include <optional>
#include <string>

class ZRAudioUnit;

// An audio format: one AudioStreamBasicDescription with a default (44.1 kHz mono 32-bit float, packed and
// non-interleaved), setters that keep its byte sizes consistent, a readable name and the format service's facts.
//
// The format-service questions come in two forms: with an error parameter they fill it with a
// ZRAudioStreamDescriptionError on failure; without one they show that error as an alert and go on.
class ZR_EXPORT ZRAudioStreamDescription {
public:
    ZRAudioStreamDescription() noexcept;
    explicit ZRAudioStreamDescription(const AudioStreamBasicDescription& description) noexcept;
    // The default format with the given rate and channels; the byte sizes stay those of one channel, which is
    // right for the default non-interleaved layout.
    ZRAudioStreamDescription(double rate, uint32_t channels) noexcept;
    static ZRAudioStreamDescription descriptionWithBasicDescription(const AudioStreamBasicDescription& description)
    {
        return ZRAudioStreamDescription(description);
    }
    static ZRAudioStreamDescription descriptionWithRate(double rate, uint32_t channels)
    {
        return ZRAudioStreamDescription(rate, channels);
    }
    // The stream format of a scope and element of an audio unit (element 0 when not given). Only the low 16 bits
    // of the unit's status decide, and the error's code is that 16-bit value sign-extended: "Getting an audio
    // stream description".
    static std::optional<ZRAudioStreamDescription> descriptionWithAudioUnit(
        const ZRAudioUnit& unit, AudioUnitScope scope, AudioUnitElement element = 0, ZRErrorPtr* error = nullptr);

    // The held structure, for host calls that read or fill it.
    const AudioStreamBasicDescription* description() const noexcept { return &_description; }
    AudioStreamBasicDescription* description() noexcept { return &_description; }

    double rate() const noexcept { return _description.mSampleRate; }
    void setRate(double rate) noexcept { _description.mSampleRate = rate; }
    AudioFormatID format() const noexcept { return _description.mFormatID; }
    void setFormat(AudioFormatID format) noexcept { _description.mFormatID = format; }
    uint32_t channels() const noexcept { return _description.mChannelsPerFrame; }
    // Leaves the byte sizes as they are; setRange recomputes them.
    void setChannels(uint32_t channels) noexcept { _description.mChannelsPerFrame = channels; }
    AudioFormatFlags flags() const noexcept { return _description.mFormatFlags; }
    void setFlags(AudioFormatFlags flags) noexcept { _description.mFormatFlags = flags; }
    uint32_t framesPerPacket() const noexcept { return _description.mFramesPerPacket; }
    uint32_t bytesPerPacket() const noexcept { return _description.mBytesPerPacket; }
    // The bit depth. Setting it makes bytes per packet and per frame bits / 8 (rounded down), times the channels
    // unless the format is non-interleaved.
    uint32_t range() const noexcept { return _description.mBitsPerChannel; }
    void setRange(uint32_t bits) noexcept;

    // Compares every member but mReserved, the rate exactly.
    bool isEqualToDescription(const ZRAudioStreamDescription& other) const noexcept;
    // False for null, otherwise isEqualToDescription.
    bool isEqual(const ZRAudioStreamDescription* other) const noexcept;
    bool operator==(const ZRAudioStreamDescription& other) const noexcept { return isEqualToDescription(other); }

    // Sets every member to zero.
    void clear() noexcept;

    // The English name of the format ID ("Linear PCM", "AAC", ...), "unknown" for IDs without one.
    std::string formatName() const;
    // The format service's name for the whole format: "Retrieving the audio description name".
    std::optional<std::string> name(ZRErrorPtr* error) const;
    std::optional<std::string> name() const;
    // "Retrieving the external frame details"; false on failure.
    bool isExternallyFramed(ZRErrorPtr* error) const;
    bool isExternallyFramed() const;
    // "Retrieving the VBR details"; false on failure.
    bool isVBR(ZRErrorPtr* error) const;
    bool isVBR() const;
    // Lets the format service fill in the members the format determines: "Completing the audio description". The
    // description is unchanged on failure.
    bool complete(ZRErrorPtr* error);
    bool complete();

    // Writes "rate: 44100 / channels: 1" to the console.
    void printDescriptionToLog() const;

private:
    AudioStreamBasicDescription _description;
};
