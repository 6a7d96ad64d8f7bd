#include <zrbase/host/audio/ZRAudioConverterService.h>

#include <zrbase/host/audio/ZRFFmpegPrivate.h>
#include <zrbase/host/audio/ZRSampleFormatPrivate.h>

extern "C" {
#include <libavutil/channel_layout.h>
#include <libavutil/opt.h>
}
#include <soxr.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstring>
#include <deque>
#include <vector>

namespace {

// Frames of float audio per channel, appended at the end and taken from the front.
class FloatQueue {
public:
    void setChannels(uint32_t channels) { _channels.assign(channels, {}); }
    size_t frames() const noexcept { return _channels.empty() ? 0 : _channels[0].size() - _start; }
    const float* channel(uint32_t index) const noexcept { return _channels[index].data() + _start; }
    // Room for `frames` more frames in every channel, to be filled before the next call.
    float* append(uint32_t index, size_t frames)
    {
        std::vector<float>& data = _channels[index];
        data.resize(data.size() + frames);
        return data.data() + data.size() - frames;
    }
    // Takes back frames of one channel that append made room for but that were not filled.
    void dropLast(uint32_t index, size_t frames) noexcept
    {
        std::vector<float>& data = _channels[index];
        data.resize(data.size() - frames);
    }
    void consume(size_t frames) noexcept
    {
        _start += frames;
        if (_start == 0 || _start < threshold())
            return;
        for (std::vector<float>& data : _channels)
            data.erase(data.begin(), data.begin() + ptrdiff_t(_start));
        _start = 0;
    }
    void clear() noexcept
    {
        for (std::vector<float>& data : _channels)
            data.clear();
        _start = 0;
    }

private:
    // Consumed frames are dropped once they outnumber those still waiting, so moving them costs no more than
    // having queued them.
    size_t threshold() const noexcept { return std::max<size_t>(4096, frames()); }

    std::vector<std::vector<float>> _channels;
    size_t _start = 0;
};

soxr_quality_spec_t qualitySpec(uint32_t quality) noexcept
{
    unsigned long recipe = SOXR_QQ;
    if (quality >= kAudioConverterQuality_Max)
        recipe = SOXR_VHQ;
    else if (quality >= kAudioConverterQuality_High)
        recipe = SOXR_HQ;
    else if (quality >= kAudioConverterQuality_Medium)
        recipe = SOXR_MQ;
    else if (quality >= kAudioConverterQuality_Low)
        recipe = SOXR_LQ;
    return soxr_quality_spec(recipe, 0);
}

// The native-endian sample of an FFmpeg sample format.
ZRSampleFormat sampleFormatOf(AVSampleFormat format) noexcept
{
    switch (av_get_packed_sample_fmt(format)) {
    case AV_SAMPLE_FMT_U8:
        return ZRNativeSampleFormat(1, false, false);
    case AV_SAMPLE_FMT_S16:
        return ZRNativeSampleFormat(2, false, true);
    case AV_SAMPLE_FMT_S32:
        return ZRNativeSampleFormat(4, false, true);
    case AV_SAMPLE_FMT_FLT:
        return ZRNativeSampleFormat(4, true, true);
    case AV_SAMPLE_FMT_DBL:
        return ZRNativeSampleFormat(8, true, true);
    default:
        return {};
    }
}

// The channels of a list of linear PCM buffers at frame `frame`, where they are native floats in a buffer each (or the
// one buffer of mono) and aligned as floats; false otherwise.
template <typename Sample>
bool nativeFloatChannels(const AudioBufferList& list, const AudioStreamBasicDescription& format,
    const ZRSampleFormat& sample, size_t frame, Sample** channels) noexcept
{
    const ZRSampleFormat native = ZRNativeSampleFormat(4, true, true);
    const bool nonInterleaved = format.mFormatFlags & kAudioFormatFlagIsNonInterleaved;
    if (!sample.isFloat || sample.bytes != native.bytes || sample.isBigEndian != native.isBigEndian
        || (!nonInterleaved && format.mChannelsPerFrame > 1) || list.mNumberBuffers < format.mChannelsPerFrame)
        return false;
    for (uint32_t channel = 0; channel < format.mChannelsPerFrame; ++channel) {
        auto* data = static_cast<uint8_t*>(list.mBuffers[channel].mData) + frame * sizeof(float);
        if (!list.mBuffers[channel].mData || reinterpret_cast<uintptr_t>(data) % alignof(float) != 0)
            return false;
        channels[channel] = reinterpret_cast<Sample*>(data);
    }
    return true;
}

struct SoxrDelete {
    void operator()(soxr_t soxr) const noexcept { soxr_delete(soxr); }
};

} // namespace

struct OpaqueAudioConverter {
    AudioStreamBasicDescription input {};
    AudioStreamBasicDescription output {};
    uint32_t channels = 0;
    uint32_t quality = kAudioConverterQuality_Max;
    uint32_t bitRate = 0;

    // Linear PCM sides: the sample and how it is laid out.
    ZRSampleFormat inputSample;
    ZRSampleFormat outputSample;
    ZRSamplesToFloat read = nullptr;
    ZRSamplesFromFloat write = nullptr;

    ZRAVCodecContext decoder;
    ZRAVCodecContext encoder;
    ZRData decoderCookie;
    ZRAVPacket packet { av_packet_alloc() };
    ZRAVFrame frame { av_frame_alloc() };

    // Float audio at the input's rate, and at the output's rate when the two differ.
    FloatQueue decoded;
    FloatQueue resampled;
    std::unique_ptr<std::remove_pointer_t<soxr_t>, SoxrDelete> soxr;
    std::deque<ZRAVPacket> encoded;
    std::vector<const float*> soxrInput;
    std::vector<float*> soxrOutput;
    // Where a pull conversion stands: the input said it has ended; the stages behind it have been drained.
    bool inputEnded = false;
    bool drained = false;
    std::vector<uint8_t> inputListBlock;
    // While a conversion fills the caller's linear PCM buffers, the frames from `targetFrame` to `targetEnd` of
    // `target` are still to be filled: audio at the output's rate goes there as it is read, decoded or resampled,
    // while nothing waits in the queue before it. `run` carries it when the caller's samples are not native floats;
    // `targetFloats` points into them when they are, `sourceFloats` into the caller's input.
    AudioBufferList* target = nullptr;
    uint32_t targetFrame = 0;
    uint32_t targetEnd = 0;
    std::array<float, 256> run {};
    std::vector<float*> targetFloats;
    std::vector<const float*> sourceFloats;

    bool resampling() const noexcept { return input.mSampleRate != output.mSampleRate; }
    FloatQueue& outputQueue() noexcept { return resampling() ? resampled : decoded; }

    OSStatus openCodecs();
    OSStatus makeResampler();
    OSStatus decodePacket(const uint8_t* data, uint32_t size);
    OSStatus takeDecodedFrames();
    // Takes `frames` frames, which `toFloat` reads for each channel from `source(channel)` on, `stride` bytes apart.
    template <typename Source> void receive(ZRSamplesToFloat toFloat, size_t stride, size_t frames, Source source);
    // Whether the caller's buffers have room and take native floats, which `targetFloats` then points at.
    bool targetTakesFloats() noexcept;
    void readPCM(const AudioBufferList& list, uint32_t frames);
    void store(AudioBufferList& list, uint32_t offset, uint32_t channel, const float* samples, uint32_t frames);
    void writePCM(AudioBufferList& list, uint32_t offset, uint32_t frames);
    // Resamples what waits in `decoded`, or the caller's floats of every channel from `source` on while nothing
    // waits.
    OSStatus resample(bool flush, const float* const* source = nullptr, size_t sourceFrames = 0);
    OSStatus encodeQueued(bool flush);
    OSStatus pullInput(AudioConverterComplexInputDataProc proc, void* userData, uint32_t wanted);
    OSStatus drain();
};

OSStatus OpaqueAudioConverter::makeResampler()
{
    if (!resampling())
        return noErr;
    soxr_error_t error = nullptr;
    const soxr_io_spec_t io = soxr_io_spec(SOXR_FLOAT32_S, SOXR_FLOAT32_S);
    const soxr_quality_spec_t spec = qualitySpec(quality);
    soxr.reset(soxr_create(input.mSampleRate, output.mSampleRate, channels, &error, &io, &spec, nullptr));
    return error || !soxr ? kAudioConverterErr_FormatNotSupported : noErr;
}

OSStatus OpaqueAudioConverter::openCodecs()
{
    if (input.mFormatID != kAudioFormatLinearPCM && !decoder) {
        const AVCodec* codec = avcodec_find_decoder(ZRCodecIDForDescription(input));
        ZRAVCodecContext context(codec ? avcodec_alloc_context3(codec) : nullptr);
        if (!context)
            return kAudioConverterErr_FormatNotSupported;
        context->sample_rate = int(input.mSampleRate);
        av_channel_layout_default(&context->ch_layout, int(channels));
        const ZRData extradata = ZRExtradataForMagicCookie(codec->id, decoderCookie);
        if (!extradata.empty()) {
            context->extradata = static_cast<uint8_t*>(av_mallocz(extradata.size() + AV_INPUT_BUFFER_PADDING_SIZE));
            if (!context->extradata)
                return kAudioConverterErr_UnspecifiedError;
            std::memcpy(context->extradata, extradata.data(), extradata.size());
            context->extradata_size = int(extradata.size());
        }
        // Every frame the packets make comes out: a decoder that would drop a delay its header names (Opus's
        // pre-skip) leaves that to the reader, which takes off the delay the container records.
        context->flags2 |= AV_CODEC_FLAG2_SKIP_MANUAL;
        if (input.mFormatID == kAudioFormatAppleLossless && extradata.empty())
            return kAudioConverterErr_FormatNotSupported;
        if (avcodec_open2(context.get(), codec, nullptr) < 0)
            return kAudioConverterErr_FormatNotSupported;
        decoder = std::move(context);
    }
    if (output.mFormatID != kAudioFormatLinearPCM && !encoder) {
        const AVCodec* codec = avcodec_find_encoder(ZRCodecIDForDescription(output));
        ZRAVCodecContext context(codec ? avcodec_alloc_context3(codec) : nullptr);
        if (!context)
            return kAudioConverterErr_FormatNotSupported;
        context->sample_rate = int(output.mSampleRate);
        av_channel_layout_default(&context->ch_layout, int(channels));
        if (bitRate > 0)
            context->bit_rate = bitRate;
        context->flags |= AV_CODEC_FLAG_GLOBAL_HEADER;
        // Float planar where the encoder takes it, otherwise the widest integer it takes.
        AVSampleFormat chosen = AV_SAMPLE_FMT_NONE;
        for (const AVSampleFormat* format = codec->sample_fmts; format && *format != AV_SAMPLE_FMT_NONE; ++format) {
            if (*format == AV_SAMPLE_FMT_FLTP || chosen == AV_SAMPLE_FMT_NONE
                || (chosen != AV_SAMPLE_FMT_FLTP && av_get_bytes_per_sample(*format) > av_get_bytes_per_sample(chosen)
                    && (output.mFormatID != kAudioFormatAppleLossless || output.mFormatFlags > 1)))
                chosen = *format;
        }
        context->sample_fmt = chosen;
        if (output.mFormatID == kAudioFormatAppleLossless) {
            static constexpr int depths[] = { 16, 16, 20, 24, 32 };
            context->bits_per_raw_sample = output.mFormatFlags < 5 ? depths[output.mFormatFlags] : 16;
        }
        if (avcodec_open2(context.get(), codec, nullptr) < 0)
            return kAudioConverterErr_FormatNotSupported;
        if (context->frame_size > 0)
            output.mFramesPerPacket = uint32_t(context->frame_size);
        encoder = std::move(context);
    }
    return noErr;
}

template <typename Source>
void OpaqueAudioConverter::receive(ZRSamplesToFloat toFloat, size_t stride, size_t frames, Source source)
{
    const size_t direct
        = target && !resampling() && decoded.frames() == 0 ? std::min<size_t>(frames, targetEnd - targetFrame) : 0;
    const bool floats = direct > 0 && targetTakesFloats();
    for (uint32_t channel = 0; channel < channels; ++channel) {
        const uint8_t* from = source(channel);
        if (floats) {
            toFloat(from, stride, targetFloats[channel], direct);
        } else {
            for (size_t done = 0; done < direct; done += run.size()) {
                const size_t count = std::min(run.size(), direct - done);
                toFloat(from + done * stride, stride, run.data(), count);
                store(*target, uint32_t(targetFrame + done), channel, run.data(), uint32_t(count));
            }
        }
        toFloat(from + direct * stride, stride, decoded.append(channel, frames - direct), frames - direct);
    }
    targetFrame += uint32_t(direct);
}

bool OpaqueAudioConverter::targetTakesFloats() noexcept
{
    return target && targetFrame < targetEnd
        && nativeFloatChannels(*target, output, outputSample, targetFrame, targetFloats.data());
}

void OpaqueAudioConverter::readPCM(const AudioBufferList& list, uint32_t frames)
{
    const bool nonInterleaved = input.mFormatFlags & kAudioFormatFlagIsNonInterleaved;
    receive(read, input.mBytesPerFrame, frames, [&](uint32_t channel) {
        const auto* data = static_cast<const uint8_t*>(list.mBuffers[nonInterleaved ? channel : 0].mData);
        return data + (nonInterleaved ? 0 : size_t(channel) * inputSample.bytes);
    });
}

void OpaqueAudioConverter::store(
    AudioBufferList& list, uint32_t offset, uint32_t channel, const float* samples, uint32_t frames)
{
    const bool nonInterleaved = output.mFormatFlags & kAudioFormatFlagIsNonInterleaved;
    auto* data = static_cast<uint8_t*>(list.mBuffers[nonInterleaved ? channel : 0].mData)
        + size_t(offset) * output.mBytesPerFrame;
    write(samples, data + (nonInterleaved ? 0 : size_t(channel) * outputSample.bytes), output.mBytesPerFrame, frames);
}

void OpaqueAudioConverter::writePCM(AudioBufferList& list, uint32_t offset, uint32_t frames)
{
    FloatQueue& queue = outputQueue();
    for (uint32_t channel = 0; channel < channels; ++channel)
        store(list, offset, channel, queue.channel(channel), frames);
    queue.consume(frames);
}

OSStatus OpaqueAudioConverter::takeDecodedFrames()
{
    while (true) {
        const int result = avcodec_receive_frame(decoder.get(), frame.get());
        if (result == AVERROR(EAGAIN) || result == AVERROR_EOF)
            return noErr;
        if (result < 0)
            return kAudioConverterErr_UnspecifiedError;
        const ZRSampleFormat sample = sampleFormatOf(AVSampleFormat(frame->format));
        const ZRSamplesToFloat toFloat = ZRSamplesToFloatFunction(sample);
        if (!toFloat || frame->ch_layout.nb_channels != int(channels)) {
            av_frame_unref(frame.get());
            return kAudioConverterErr_FormatNotSupported;
        }
        const bool planar = av_sample_fmt_is_planar(AVSampleFormat(frame->format));
        receive(
            toFloat, planar ? sample.bytes : sample.bytes * channels, size_t(frame->nb_samples), [&](uint32_t channel) {
                return planar ? frame->extended_data[channel] : frame->extended_data[0] + channel * sample.bytes;
            });
        av_frame_unref(frame.get());
    }
}

OSStatus OpaqueAudioConverter::decodePacket(const uint8_t* data, uint32_t size)
{
    av_packet_unref(packet.get());
    if (data) {
        if (av_new_packet(packet.get(), int(size)) < 0)
            return kAudioConverterErr_UnspecifiedError;
        std::memcpy(packet->data, data, size);
    }
    int result = avcodec_send_packet(decoder.get(), data ? packet.get() : nullptr);
    if (result == AVERROR(EAGAIN)) {
        if (const OSStatus status = takeDecodedFrames(); status != noErr)
            return status;
        result = avcodec_send_packet(decoder.get(), data ? packet.get() : nullptr);
    }
    // A damaged packet is passed over: the frames around it still decode.
    if (result < 0 && result != AVERROR_INVALIDDATA && result != AVERROR_EOF)
        return kAudioConverterErr_UnspecifiedError;
    return takeDecodedFrames();
}

OSStatus OpaqueAudioConverter::resample(bool flush, const float* const* source, size_t sourceFrames)
{
    if (!resampling())
        return noErr;
    size_t taken = 0;
    while (true) {
        const size_t available = source ? sourceFrames - taken : decoded.frames();
        // With the input used up, soxr is told of the end (no input) until it has nothing more to give.
        const bool ending = flush && available == 0;
        if (available == 0 && !ending)
            return noErr;
        for (uint32_t channel = 0; channel < channels; ++channel)
            soxrInput[channel] = source ? source[channel] + taken : decoded.channel(channel);
        // Into the caller's buffers while nothing waits in the queue, otherwise onto the queue.
        const bool direct = resampled.frames() == 0 && targetTakesFloats();
        const size_t room = direct ? targetEnd - targetFrame
                                   : size_t(double(available) * output.mSampleRate / input.mSampleRate) + 1024;
        for (uint32_t channel = 0; channel < channels; ++channel)
            soxrOutput[channel] = direct ? targetFloats[channel] : resampled.append(channel, room);
        size_t used = 0;
        size_t made = 0;
        const soxr_error_t error = soxr_process(
            soxr.get(), ending ? nullptr : soxrInput.data(), available, &used, soxrOutput.data(), room, &made);
        if (direct)
            targetFrame += uint32_t(made);
        else
            for (uint32_t channel = 0; channel < channels; ++channel)
                resampled.dropLast(channel, room - made);
        if (error)
            return kAudioConverterErr_UnspecifiedError;
        if (source)
            taken += used;
        else
            decoded.consume(used);
        if (ending && made == 0)
            return noErr;
    }
}

OSStatus OpaqueAudioConverter::encodeQueued(bool flush)
{
    FloatQueue& queue = outputQueue();
    const size_t frameSize = encoder->frame_size > 0 ? size_t(encoder->frame_size) : 4096;
    const ZRSampleFormat sample = sampleFormatOf(encoder->sample_fmt);
    const ZRSamplesFromFloat fromFloat = ZRSamplesFromFloatFunction(sample);
    const bool planar = av_sample_fmt_is_planar(encoder->sample_fmt);
    const bool smallLast = encoder->codec->capabilities & AV_CODEC_CAP_SMALL_LAST_FRAME;
    while (queue.frames() >= frameSize || (flush && queue.frames() > 0)) {
        const size_t frames = std::min(queue.frames(), frameSize);
        frame->format = encoder->sample_fmt;
        frame->nb_samples = int(smallLast ? frames : frameSize);
        if (av_channel_layout_copy(&frame->ch_layout, &encoder->ch_layout) < 0
            || av_frame_get_buffer(frame.get(), 0) < 0)
            return kAudioConverterErr_UnspecifiedError;
        for (uint32_t channel = 0; channel < channels; ++channel) {
            uint8_t* data = planar ? frame->extended_data[channel] : frame->extended_data[0] + channel * sample.bytes;
            const size_t stride = planar ? sample.bytes : sample.bytes * channels;
            fromFloat(queue.channel(channel), data, stride, frames);
            // A short last frame of an encoder that takes only whole ones ends in silence.
            static constexpr float silence[64] {};
            for (size_t done = frames; done < size_t(frame->nb_samples);) {
                const size_t run = std::min<size_t>(64, size_t(frame->nb_samples) - done);
                fromFloat(silence, data + done * stride, stride, run);
                done += run;
            }
        }
        queue.consume(frames);
        const int result = avcodec_send_frame(encoder.get(), frame.get());
        av_frame_unref(frame.get());
        if (result < 0)
            return kAudioConverterErr_UnspecifiedError;
        for (ZRAVPacket out(av_packet_alloc()); out && avcodec_receive_packet(encoder.get(), out.get()) == 0;
             out.reset(av_packet_alloc()))
            encoded.push_back(std::move(out));
    }
    if (flush) {
        avcodec_send_frame(encoder.get(), nullptr);
        for (ZRAVPacket out(av_packet_alloc()); out && avcodec_receive_packet(encoder.get(), out.get()) == 0;
             out.reset(av_packet_alloc()))
            encoded.push_back(std::move(out));
    }
    return noErr;
}

OSStatus OpaqueAudioConverter::pullInput(AudioConverterComplexInputDataProc proc, void* userData, uint32_t wanted)
{
    const bool pcm = input.mFormatID == kAudioFormatLinearPCM;
    const uint32_t buffers = pcm && (input.mFormatFlags & kAudioFormatFlagIsNonInterleaved) ? channels : 1;
    inputListBlock.assign(ZRAudioBufferListSize(buffers), 0);
    auto* list = reinterpret_cast<AudioBufferList*>(inputListBlock.data());
    list->mNumberBuffers = buffers;
    const double frames = std::ceil(double(wanted) * input.mSampleRate / output.mSampleRate);
    uint32_t count = pcm ? uint32_t(std::clamp(frames, 1.0, double(1 << 20)))
                         : uint32_t(std::clamp(frames / std::max<uint32_t>(input.mFramesPerPacket, 1), 1.0, 64.0));
    AudioStreamPacketDescription* descriptions = nullptr;
    if (const OSStatus status = proc(this, &count, list, &descriptions, userData); status != noErr)
        return status;
    if (count == 0) {
        inputEnded = true;
        return noErr;
    }
    if (pcm) {
        // Never more frames than every buffer holds.
        for (uint32_t i = 0; i < buffers; ++i)
            count
                = list->mBuffers[i].mData ? std::min(count, list->mBuffers[i].mDataByteSize / input.mBytesPerFrame) : 0;
        // Native floats to be resampled go to soxr as they stand.
        if (resampling() && decoded.frames() == 0
            && nativeFloatChannels(*list, input, inputSample, 0, sourceFloats.data())) {
            if (const OSStatus status = resample(false, sourceFloats.data(), count); status != noErr)
                return status;
        } else {
            readPCM(*list, count);
        }
    } else {
        if (!descriptions && input.mBytesPerPacket == 0)
            return kAudioConverterErr_RequiresPacketDescriptionsError;
        const auto* data = static_cast<const uint8_t*>(list->mBuffers[0].mData);
        const uint64_t size = data ? list->mBuffers[0].mDataByteSize : 0;
        for (uint32_t i = 0; i < count; ++i) {
            const uint64_t offset
                = descriptions ? uint64_t(descriptions[i].mStartOffset) : uint64_t(i) * input.mBytesPerPacket;
            const uint32_t bytes = descriptions ? descriptions[i].mDataByteSize : input.mBytesPerPacket;
            if (offset > size || bytes > size - offset)
                return kAudioConverterErr_InvalidInputSize;
            if (const OSStatus status = decodePacket(data + offset, bytes); status != noErr)
                return status;
        }
    }
    if (const OSStatus status = resample(false); status != noErr)
        return status;
    return encoder ? encodeQueued(false) : noErr;
}

OSStatus OpaqueAudioConverter::drain()
{
    drained = true;
    if (decoder) {
        if (const OSStatus status = decodePacket(nullptr, 0); status != noErr)
            return status;
    }
    if (const OSStatus status = resample(true); status != noErr)
        return status;
    return encoder ? encodeQueued(true) : noErr;
}

OSStatus ZRAudioConverterService::create(const AudioStreamBasicDescription& source,
    const AudioStreamBasicDescription& destination, AudioConverterRef& converter)
{
    ZRQuietFFmpeg();
    if (!(source.mSampleRate > 0 && source.mSampleRate <= 4e6))
        return kAudioConverterErr_InputSampleRateOutOfRange;
    if (!(destination.mSampleRate >= 0 && destination.mSampleRate <= 4e6))
        return kAudioConverterErr_OutputSampleRateOutOfRange;
    const bool sourcePCM = source.mFormatID == kAudioFormatLinearPCM;
    const bool destinationPCM = destination.mFormatID == kAudioFormatLinearPCM;
    if (source.mChannelsPerFrame == 0 || source.mChannelsPerFrame > 64
        || source.mChannelsPerFrame != destination.mChannelsPerFrame || (!sourcePCM && !destinationPCM))
        return kAudioConverterErr_FormatNotSupported;
    auto made = std::make_unique<OpaqueAudioConverter>();
    made->input = source;
    made->output = destination;
    made->channels = source.mChannelsPerFrame;
    if (sourcePCM) {
        made->inputSample = ZRSampleFormatForDescription(source);
        made->read = ZRSamplesToFloatFunction(made->inputSample);
        if (!made->read)
            return kAudioConverterErr_FormatNotSupported;
    } else if (!avcodec_find_decoder(ZRCodecIDForDescription(source))) {
        return kAudioConverterErr_FormatNotSupported;
    }
    if (destinationPCM) {
        if (destination.mSampleRate == 0)
            return kAudioConverterErr_OutputSampleRateOutOfRange;
        made->outputSample = ZRSampleFormatForDescription(destination);
        made->write = ZRSamplesFromFloatFunction(made->outputSample);
        if (!made->write)
            return kAudioConverterErr_FormatNotSupported;
    } else {
        const AVCodec* codec = avcodec_find_encoder(ZRCodecIDForDescription(destination));
        if (!codec)
            return kAudioConverterErr_FormatNotSupported;
        // The encoder's rate: the one asked for, or the source's, or the encoder's nearest to it.
        double rate = destination.mSampleRate > 0 ? destination.mSampleRate : source.mSampleRate;
        if (codec->supported_samplerates) {
            double nearest = 0;
            for (const int* candidate = codec->supported_samplerates; *candidate; ++candidate) {
                if (nearest == 0 || std::abs(*candidate - rate) < std::abs(nearest - rate))
                    nearest = *candidate;
            }
            if (destination.mSampleRate > 0 && nearest != rate)
                return kAudioConverterErr_OutputSampleRateOutOfRange;
            rate = nearest;
        }
        made->output.mSampleRate = rate;
        made->output.mBytesPerPacket = 0;
        made->output.mBytesPerFrame = 0;
        made->output.mBitsPerChannel = 0;
    }
    made->decoded.setChannels(made->channels);
    made->resampled.setChannels(made->channels);
    made->soxrInput.resize(made->channels);
    made->soxrOutput.resize(made->channels);
    made->targetFloats.resize(made->channels);
    made->sourceFloats.resize(made->channels);
    if (!made->packet || !made->frame)
        return kAudioConverterErr_UnspecifiedError;
    if (const OSStatus status = made->makeResampler(); status != noErr)
        return status;
    // The encoder opens now, so that its packet size and cookie are known from the start.
    if (const OSStatus status = made->openCodecs(); status != noErr && !destinationPCM)
        return status;
    converter = made.release();
    return noErr;
}

OSStatus ZRAudioConverterService::dispose(AudioConverterRef converter)
{
    if (!converter)
        return kAudioConverterErr_UnspecifiedError;
    delete converter;
    return noErr;
}

OSStatus ZRAudioConverterService::reset(AudioConverterRef converter)
{
    if (!converter)
        return kAudioConverterErr_UnspecifiedError;
    converter->decoded.clear();
    converter->resampled.clear();
    converter->encoded.clear();
    converter->inputEnded = false;
    converter->drained = false;
    if (converter->decoder)
        avcodec_flush_buffers(converter->decoder.get());
    // An encoder that was flushed takes no more input; a new one starts the next stream.
    converter->encoder.reset();
    if (converter->soxr)
        soxr_clear(converter->soxr.get());
    return noErr;
}

OSStatus ZRAudioConverterService::convertBuffer(
    AudioConverterRef converter, uint32_t inputBytes, const void* input, uint32_t& ioOutputBytes, void* output)
{
    if (!converter)
        return kAudioConverterErr_UnspecifiedError;
    OpaqueAudioConverter& c = *converter;
    if (!c.read || !c.write || c.resampling()
        || (c.channels > 1 && ((c.input.mFormatFlags | c.output.mFormatFlags) & kAudioFormatFlagIsNonInterleaved)))
        return kAudioConverterErr_OperationNotSupported;
    if (inputBytes % c.input.mBytesPerFrame != 0)
        return kAudioConverterErr_InvalidInputSize;
    const uint32_t frames = inputBytes / c.input.mBytesPerFrame;
    if (uint64_t(frames) * c.output.mBytesPerFrame > ioOutputBytes)
        return kAudioConverterErr_InvalidOutputSize;
    if (frames > 0 && (!input || !output))
        return kAudioConverterErr_InvalidInputSize;
    // Runs of frames through a float block, each read completely before it is written, so that the same memory can
    // be both sides when frames keep their size.
    constexpr uint32_t run = 256;
    std::vector<float> block(size_t(run) * c.channels);
    for (uint32_t done = 0; done < frames; done += run) {
        const uint32_t count = std::min(run, frames - done);
        const auto* from = static_cast<const uint8_t*>(input) + size_t(done) * c.input.mBytesPerFrame;
        auto* to = static_cast<uint8_t*>(output) + size_t(done) * c.output.mBytesPerFrame;
        for (uint32_t channel = 0; channel < c.channels; ++channel)
            c.read(from + channel * c.inputSample.bytes, c.input.mBytesPerFrame, block.data() + size_t(channel) * run,
                count);
        for (uint32_t channel = 0; channel < c.channels; ++channel)
            c.write(block.data() + size_t(channel) * run, to + channel * c.outputSample.bytes, c.output.mBytesPerFrame,
                count);
    }
    ioOutputBytes = frames * c.output.mBytesPerFrame;
    return noErr;
}

OSStatus ZRAudioConverterService::fillComplexBuffer(AudioConverterRef converter,
    AudioConverterComplexInputDataProc proc, void* userData, uint32_t& ioOutputPackets, AudioBufferList* output,
    AudioStreamPacketDescription* descriptions)
{
    if (!converter || !proc || !output)
        return kAudioConverterErr_UnspecifiedError;
    OpaqueAudioConverter& c = *converter;
    if (const OSStatus status = c.openCodecs(); status != noErr)
        return status;
    const bool pcm = c.output.mFormatID == kAudioFormatLinearPCM;
    uint32_t wanted = ioOutputPackets;
    uint32_t produced = 0;
    uint32_t bytes = 0;
    OSStatus status = noErr;
    if (pcm) {
        const uint32_t buffers = (c.output.mFormatFlags & kAudioFormatFlagIsNonInterleaved) ? c.channels : 1;
        if (output->mNumberBuffers < buffers)
            return kAudioConverterErr_InvalidOutputSize;
        for (uint32_t i = 0; i < buffers; ++i)
            wanted = output->mBuffers[i].mData
                ? std::min(wanted, output->mBuffers[i].mDataByteSize / c.output.mBytesPerFrame)
                : 0;
        while (status == noErr) {
            const uint32_t take = uint32_t(std::min<size_t>(c.outputQueue().frames(), wanted - produced));
            c.writePCM(*output, produced, take);
            produced += take;
            if (produced == wanted || c.drained)
                break;
            c.target = output;
            c.targetFrame = produced;
            c.targetEnd = wanted;
            status = c.inputEnded ? c.drain() : c.pullInput(proc, userData, wanted - produced);
            produced = c.targetFrame;
            c.target = nullptr;
        }
        for (uint32_t i = 0; i < buffers; ++i)
            output->mBuffers[i].mDataByteSize = produced * c.output.mBytesPerFrame;
    } else {
        if (!descriptions)
            return kAudioConverterErr_RequiresPacketDescriptionsError;
        const uint32_t room
            = output->mNumberBuffers > 0 && output->mBuffers[0].mData ? output->mBuffers[0].mDataByteSize : 0;
        bool full = false;
        while (status == noErr) {
            while (produced < wanted && !c.encoded.empty()) {
                const AVPacket& packet = *c.encoded.front();
                if (uint32_t(packet.size) > room - bytes) {
                    full = true;
                    if (produced == 0)
                        status = kAudioConverterErr_InvalidOutputSize;
                    break;
                }
                std::memcpy(static_cast<uint8_t*>(output->mBuffers[0].mData) + bytes, packet.data, size_t(packet.size));
                descriptions[produced] = { bytes, 0, uint32_t(packet.size) };
                bytes += uint32_t(packet.size);
                ++produced;
                c.encoded.pop_front();
            }
            if (full || produced == wanted || c.drained)
                break;
            status = c.inputEnded
                ? c.drain()
                : c.pullInput(proc, userData, (wanted - produced) * std::max<uint32_t>(c.output.mFramesPerPacket, 1));
        }
        if (output->mNumberBuffers > 0)
            output->mBuffers[0].mDataByteSize = bytes;
    }
    ioOutputPackets = produced;
    return status;
}

OSStatus ZRAudioConverterService::maximumOutputPacketSize(AudioConverterRef converter, uint32_t& size)
{
    if (!converter)
        return kAudioConverterErr_UnspecifiedError;
    const AudioStreamBasicDescription& output = converter->output;
    // An encoded packet never needs more room than its frames as 32-bit samples and some headers.
    size = output.mFormatID == kAudioFormatLinearPCM
        ? output.mBytesPerPacket
        : std::max<uint32_t>(output.mFramesPerPacket, 1152) * output.mChannelsPerFrame * 4 + 1024;
    return noErr;
}

OSStatus ZRAudioConverterService::bitRate(AudioConverterRef converter, uint32_t& bitRate)
{
    if (!converter || !converter->encoder)
        return kAudioConverterErr_PropertyNotSupported;
    bitRate = uint32_t(converter->encoder->bit_rate);
    return noErr;
}

OSStatus ZRAudioConverterService::setBitRate(AudioConverterRef converter, uint32_t bitRate)
{
    if (!converter || !converter->encoder)
        return kAudioConverterErr_PropertyNotSupported;
    if (converter->encoder->frame_number > 0 || !converter->encoded.empty())
        return kAudioConverterErr_OperationNotSupported;
    const uint32_t previous = converter->bitRate;
    converter->bitRate = bitRate;
    converter->encoder.reset();
    if (converter->openCodecs() == noErr)
        return noErr;
    converter->bitRate = previous;
    return converter->openCodecs() == noErr ? kAudioConverterErr_PropertyNotSupported
                                            : kAudioConverterErr_UnspecifiedError;
}

OSStatus ZRAudioConverterService::quality(AudioConverterRef converter, uint32_t& quality)
{
    if (!converter)
        return kAudioConverterErr_UnspecifiedError;
    quality = converter->quality;
    return noErr;
}

OSStatus ZRAudioConverterService::setQuality(AudioConverterRef converter, uint32_t quality)
{
    if (!converter)
        return kAudioConverterErr_UnspecifiedError;
    converter->quality = quality;
    return converter->makeResampler();
}

OSStatus ZRAudioConverterService::inputDescription(AudioConverterRef converter, AudioStreamBasicDescription& format)
{
    if (!converter)
        return kAudioConverterErr_UnspecifiedError;
    format = converter->input;
    return noErr;
}

OSStatus ZRAudioConverterService::outputDescription(AudioConverterRef converter, AudioStreamBasicDescription& format)
{
    if (!converter)
        return kAudioConverterErr_UnspecifiedError;
    format = converter->output;
    return noErr;
}

OSStatus ZRAudioConverterService::setDecompressionMagicCookie(AudioConverterRef converter, const ZRData& cookie)
{
    if (!converter || converter->input.mFormatID == kAudioFormatLinearPCM)
        return kAudioConverterErr_PropertyNotSupported;
    converter->decoderCookie = cookie;
    converter->decoder.reset();
    return noErr;
}

OSStatus ZRAudioConverterService::compressionMagicCookie(AudioConverterRef converter, ZRData& cookie)
{
    if (!converter || !converter->encoder)
        return kAudioConverterErr_PropertyNotSupported;
    const AVCodecContext& encoder = *converter->encoder;
    cookie = ZRMagicCookieForExtradata(
        encoder.codec_id, { encoder.extradata, size_t(std::max(encoder.extradata_size, 0)) });
    return noErr;
}

OSStatus ZRAudioConverterService::primingFrames(AudioConverterRef converter, uint32_t& frames)
{
    if (!converter)
        return kAudioConverterErr_UnspecifiedError;
    frames = converter->encoder ? uint32_t(std::max(converter->encoder->initial_padding, 0)) : 0;
    return noErr;
}
