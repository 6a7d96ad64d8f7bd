#pragma once

#include <zrbase/host/foundation/ZRExport.h>
#include <zrbase/host/foundation/ZRPropertyList.h>

#include <cstdint>
#include <memory>
#include <string_view>

class ZRFilter;
class ZRNativeAudioBuffer;
struct ZRFilterLanes;

// A filter class as a value, the way the type table hands it out: its name (the "class" of a filter's state), its
// type code and a factory.
struct ZRFilterClass {
    std::string_view name;
    uint32_t type;
    std::unique_ptr<ZRFilter> (*make)();

    // A new filter of exactly this class.
    std::unique_ptr<ZRFilter> filter() const { return make(); }
};

// The base of the filters that process native buffers in place, block after block, keeping a history per channel.
// It holds the sample rate and the on/off switch and gives its state as a property-list dictionary; on its own it
// filters nothing.
//
// The history follows the channel count of the buffers filtered: channels that come into use start from silence.
// Room for eight channels is made at construction, so filter() allocates only when a buffer brings more channels
// than the filter has seen (reserveChannels() makes that room beforehand). Should memory run out then, the
// channels beyond the room are left as they are. A channel whose data is missing or shorter than the buffer's
// frames (possible only in a list wrapped from elsewhere) is skipped.
class ZR_EXPORT ZRFilter {
public:
    // Type codes; callers store them, so they keep these values (C-weighting comes before B-weighting).
    enum Type : uint32_t {
        Lowpass = 0,
        Highpass = 1,
        Bandpass = 2,
        AWeighted = 3,
        CWeighted = 4,
        BWeighted = 5,
        DC = 6,
        NoFilter = 0x7fffffff,
    };

    // Inactive, at 48000 Hz.
    ZRFilter();
    virtual ~ZRFilter();
    ZRFilter(const ZRFilter&) = delete;
    ZRFilter& operator=(const ZRFilter&) = delete;

    // The class of a type code from Lowpass to DC; null for any other code, NoFilter included.
    static const ZRFilterClass* filterClassForType(uint32_t type) noexcept;
    virtual const ZRFilterClass& filterClass() const noexcept;
    uint32_t type() const noexcept { return filterClass().type; }

    // An inactive filter leaves the audio as it is (some still follow the signal, see each class).
    bool active() const noexcept { return _active; }
    void setActive(bool active) noexcept { _active = active; }
    double sampleRate() const noexcept { return _sampleRate; }
    virtual void setSampleRate(double sampleRate) noexcept { _sampleRate = sampleRate; }

    // Processes the buffer in place. Real-time safe (see above for the one allocation).
    virtual void filter(ZRNativeAudioBuffer& buffer) noexcept;
    // Forgets the history, as at a seek or a new file.
    virtual void reset() noexcept { }

    // "class" (the class name) and "active" (a boolean).
    virtual ZRDictionary state() const;
    // Reads the keys this class knows where they hold a number or a numeric string; others are left unchanged.
    virtual void setState(const ZRDictionary& state);

    // The number of channels the history follows; one to start with.
    uint32_t historyChannels() const noexcept { return _historyChannels; }
    // Makes room for the history of this many channels, so that filter() will not allocate for them.
    void reserveChannels(uint32_t channels) noexcept;

protected:
    // A filter keeping `historySamples` values per channel.
    explicit ZRFilter(uint32_t historySamples);

    // Sets the history to the buffer's channel count; answers the channels that have a history.
    uint32_t _followChannels(uint32_t channels) noexcept;
    float* _history(uint32_t channel) noexcept { return _historyBlock.get() + size_t(channel) * _historySamples; }
    // One history value; 0 outside the channels followed.
    float _historyValue(uint32_t channel, uint32_t index) const noexcept;
    void _clearHistory() noexcept;
    // The channel's samples when it has all of the buffer's frames, else null.
    static float* _samples(const ZRNativeAudioBuffer& buffer, uint32_t channel) noexcept;

    // Filters the first `channels` channels of the buffer through _filterLanes, up to eight at a time, which
    // filters them side by side in vector lanes, or a lone channel on its own, with the same result.
    void _filterChannels(ZRNativeAudioBuffer& buffer, uint32_t channels) noexcept;
    virtual void _filterLanes(const ZRFilterLanes& lanes) noexcept;

    // Reads a float, or a boolean, from the dictionary when it holds a number or a string there.
    static void _read(const ZRDictionary& state, std::string_view key, float& value) noexcept;
    static void _read(const ZRDictionary& state, std::string_view key, bool& value) noexcept;

private:
    bool _grow(uint32_t channels) noexcept;

    bool _active = false;
    double _sampleRate = 48000.0;
    uint32_t _historySamples = 0;
    uint32_t _historyChannels = 1;
    uint32_t _historyCapacity = 0;
    std::unique_ptr<float[]> _historyBlock;
};
