#include <zrbase/audio/ZRAudioStreamDescription.h>

#include <zrbase/core/ZRAudioStreamDescriptionError.h>
#include <zrbase/host/audio/ZRAudioFormatService.h>
#include <zrbase/host/audio/ZRAudioUnit.h>
#include <zrbase/host/foundation/ZRConsoleLog.h>
#include <zrbase/host/foundation/ZRLocalizedString.h>

namespace {

constexpr AudioStreamBasicDescription defaultDescription = {
    44100.0,
    kAudioFormatLinearPCM,
    kAudioFormatFlagIsFloat | kAudioFormatFlagIsPacked | kAudioFormatFlagIsNonInterleaved,
    4,
    1,
    4,
    1,
    32,
    0,
};

// Turns a failed format-service status into the caller's error; false when the status is a failure.
bool succeeded(OSStatus status, const char* action, ZRErrorPtr* error)
{
    if (status == noErr)
        return true;
    if (error)
        *error = ZRAudioStreamDescriptionError::errorWithCode(status, ZRLocalizedString(action));
    return false;
}

template <typename Result> Result alertingFailure(Result result, const ZRErrorPtr& error)
{
    if (error)
        error->alert();
    return result;
}

}

ZRAudioStreamDescription::ZRAudioStreamDescription() noexcept
    : _description(defaultDescription)
{
}

ZRAudioStreamDescription::ZRAudioStreamDescription(const AudioStreamBasicDescription& description) noexcept
    : _description(description)
{
}

ZRAudioStreamDescription::ZRAudioStreamDescription(double rate, uint32_t channels) noexcept
    : _description(defaultDescription)
{
    setRate(rate);
    setChannels(channels);
}

std::optional<ZRAudioStreamDescription> ZRAudioStreamDescription::descriptionWithAudioUnit(
    const ZRAudioUnit& unit, AudioUnitScope scope, AudioUnitElement element, ZRErrorPtr* error)
{
    ZRAudioStreamDescription description;
    // Units answer 16-bit statuses widened carelessly often enough that only the low half is trusted.
    const int16_t status = static_cast<int16_t>(unit.getStreamFormat(scope, element, description._description));
    if (status == noErr)
        return description;
    if (error)
        *error = ZRAudioStreamDescriptionError::errorWithCode(
            status, ZRLocalizedString("Getting an audio stream description"));
    return std::nullopt;
}

void ZRAudioStreamDescription::setRange(uint32_t bits) noexcept
{
    _description.mBitsPerChannel = bits;
    uint32_t bytes = bits / 8;
    if (!(_description.mFormatFlags & kAudioFormatFlagIsNonInterleaved))
        bytes *= _description.mChannelsPerFrame;
    _description.mBytesPerPacket = bytes;
    _description.mBytesPerFrame = bytes;
}

bool ZRAudioStreamDescription::isEqualToDescription(const ZRAudioStreamDescription& other) const noexcept
{
    const AudioStreamBasicDescription& a = _description;
    const AudioStreamBasicDescription& b = other._description;
    return a.mSampleRate == b.mSampleRate && a.mFormatID == b.mFormatID && a.mFormatFlags == b.mFormatFlags
        && a.mBytesPerPacket == b.mBytesPerPacket && a.mFramesPerPacket == b.mFramesPerPacket
        && a.mBytesPerFrame == b.mBytesPerFrame && a.mChannelsPerFrame == b.mChannelsPerFrame
        && a.mBitsPerChannel == b.mBitsPerChannel;
}

bool ZRAudioStreamDescription::isEqual(const ZRAudioStreamDescription* other) const noexcept
{
    if (other == this)
        return true;
    return other && isEqualToDescription(*other);
}

void ZRAudioStreamDescription::clear() noexcept { _description = {}; }

std::string ZRAudioStreamDescription::formatName() const
{
    const char* name = ZRAudioFormatService::formatName(_description.mFormatID);
    return name ? name : "unknown";
}

std::optional<std::string> ZRAudioStreamDescription::name(ZRErrorPtr* error) const
{
    std::string name;
    if (!succeeded(ZRAudioFormatService::name(_description, name), "Retrieving the audio description name", error))
        return std::nullopt;
    return name;
}

std::optional<std::string> ZRAudioStreamDescription::name() const
{
    ZRErrorPtr error;
    return alertingFailure(name(&error), error);
}

bool ZRAudioStreamDescription::isExternallyFramed(ZRErrorPtr* error) const
{
    uint32_t answer = 0;
    return succeeded(ZRAudioFormatService::isExternallyFramed(_description, answer),
               "Retrieving the external frame details", error)
        && answer;
}

bool ZRAudioStreamDescription::isExternallyFramed() const
{
    ZRErrorPtr error;
    return alertingFailure(isExternallyFramed(&error), error);
}

bool ZRAudioStreamDescription::isVBR(ZRErrorPtr* error) const
{
    uint32_t answer = 0;
    return succeeded(ZRAudioFormatService::isVBR(_description, answer), "Retrieving the VBR details", error) && answer;
}

bool ZRAudioStreamDescription::isVBR() const
{
    ZRErrorPtr error;
    return alertingFailure(isVBR(&error), error);
}

bool ZRAudioStreamDescription::complete(ZRErrorPtr* error)
{
    return succeeded(ZRAudioFormatService::complete(_description), "Completing the audio description", error);
}

bool ZRAudioStreamDescription::complete()
{
    ZRErrorPtr error;
    return alertingFailure(complete(&error), error);
}

void ZRAudioStreamDescription::printDescriptionToLog() const
{
    ZRConsoleLog("rate: %.0f / channels: %d", _description.mSampleRate, _description.mChannelsPerFrame);
}
