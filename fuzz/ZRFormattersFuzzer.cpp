#include <zrbase/formatters/ZRBarsBeatsFormatter.h>
#include <zrbase/formatters/ZRBooleanFormatter.h>
#include <zrbase/formatters/ZRChannelsFormatter.h>
#include <zrbase/formatters/ZRCombineTypeFormatter.h>
#include <zrbase/formatters/ZRCreatorFormatter.h>
#include <zrbase/formatters/ZRDataFormatter.h>
#include <zrbase/formatters/ZRDecibelFormatter.h>
#include <zrbase/formatters/ZRDepthFormatter.h>
#include <zrbase/formatters/ZRDetuneFormatter.h>
#include <zrbase/formatters/ZRDifferenceFormatter.h>
#include <zrbase/formatters/ZRFileSizeFormatter.h>
#include <zrbase/formatters/ZRFrequencyFormatter.h>
#include <zrbase/formatters/ZRKeyFormatter.h>
#include <zrbase/formatters/ZRLoopTypeFormatter.h>
#include <zrbase/formatters/ZRMIDINoteFormatter.h>
#include <zrbase/formatters/ZRNumberFormatter.h>
#include <zrbase/formatters/ZRPlaybackTypeFormatter.h>
#include <zrbase/formatters/ZRSampleRateFormatter.h>
#include <zrbase/formatters/ZRScaleFormatter.h>
#include <zrbase/formatters/ZRTempoFormatter.h>
#include <zrbase/formatters/ZRTimeFormatter.h>
#include <zrbase/formatters/ZRTimeRemainingFormatter.h>
#include <zrbase/formatters/ZRTimeSignatureFormatter.h>

#include <cmath>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <vector>

namespace {

void check(bool condition)
{
    if (!condition)
        std::abort();
}

}

// The first two bytes choose the time formatter's format, meter, tempo and counting; the rest is text that every
// formatter reads and checks as typed input. What reads is shown again, and so are the text's first eight bytes
// taken as a double (not-a-number and the infinities included). Times read are finite and not negative, notes and
// keys stay in their ranges.
extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    if (size < 2)
        return 0;
    const std::string_view text(reinterpret_cast<const char*>(data + 2), size - 2);

    ZRTimeFormatter time;
    time.setTimeFormat(static_cast<int32_t>(data[0] % 22) - 1);
    time.setPosition(data[0] & 0x80);
    time.setMeterNumerator(static_cast<int32_t>(data[1] % 8) - 1);
    time.setTempo(static_cast<float>(data[1] >> 3) * 13.5f);
    time.setSampleRate(data[1] & 1 ? 0 : 48000);
    ZRPropertyList value;
    std::string message;
    if (time.getObjectValue(value, text, &message)) {
        check(std::isfinite(value.doubleValue()) && value.doubleValue() >= 0);
        time.stringForObjectValue(value);
    }

    std::vector<std::unique_ptr<ZRFormatter>> formatters;
    formatters.push_back(std::make_unique<ZRTimeSignatureFormatter>());
    formatters.push_back(std::make_unique<ZRBarsBeatsFormatter>());
    formatters.push_back(std::make_unique<ZRTempoFormatter>());
    formatters.push_back(std::make_unique<ZRMIDINoteFormatter>());
    formatters.push_back(std::make_unique<ZRKeyFormatter>());
    formatters.push_back(std::make_unique<ZRScaleFormatter>());
    formatters.push_back(std::make_unique<ZRDetuneFormatter>());
    formatters.push_back(std::make_unique<ZRLoopTypeFormatter>());
    formatters.push_back(std::make_unique<ZRPlaybackTypeFormatter>());
    formatters.push_back(std::make_unique<ZRTimeRemainingFormatter>());
    formatters.push_back(std::make_unique<ZRDecibelFormatter>());
    formatters.push_back(std::make_unique<ZRFrequencyFormatter>());
    formatters.push_back(std::make_unique<ZRSampleRateFormatter>());
    auto depth = std::make_unique<ZRDepthFormatter>();
    depth->setDepthFormat(data[1] % 8 + 9);
    formatters.push_back(std::move(depth));
    formatters.push_back(std::make_unique<ZRChannelsFormatter>());
    formatters.push_back(std::make_unique<ZRFileSizeFormatter>());
    formatters.push_back(std::make_unique<ZRDifferenceFormatter>());
    formatters.push_back(std::make_unique<ZRDataFormatter>());
    formatters.push_back(std::make_unique<ZRBooleanFormatter>());
    formatters.push_back(std::make_unique<ZRCombineTypeFormatter>());
    formatters.push_back(std::make_unique<ZRCreatorFormatter>());
    formatters.push_back(std::make_unique<ZRNumberFormatter>());
    formatters.push_back(std::make_unique<ZRTimeFormatter>(time));

    double number = 0;
    std::memcpy(&number, data + 2, std::min(text.size(), sizeof number));
    const ZRData bytes(data, data + size);
    for (const auto& formatter : formatters) {
        ZRPropertyList read;
        if (formatter->getObjectValue(read, text))
            formatter->stringForObjectValue(read);
        formatter->isPartialStringValid(text);
        formatter->stringForObjectValue(number);
        formatter->stringForObjectValue(bytes);
    }

    ZRPropertyList note;
    if (ZRMIDINoteFormatter().getObjectValue(note, text) && text.find_first_of("ABCDEFGabcdefg#") != text.npos)
        check(note.intValue() >= 0 && note.intValue() <= 127);
    ZRPropertyList key;
    check(ZRKeyFormatter().getObjectValue(key, text) && key.intValue() >= 0 && key.intValue() <= 12);
    ZRPropertyList signature;
    if (ZRTimeSignatureFormatter().getObjectValue(signature, text))
        check((signature.intValue() >> 8) >= 2 && (signature.intValue() >> 8) <= 16);
    return 0;
}
