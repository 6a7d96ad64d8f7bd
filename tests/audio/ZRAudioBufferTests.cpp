#include <zrbase/audio/ZRAudioBuffer.h>

#include "support/ZRRecordingAlertPresenter.h"
#include "support/ZRTestFiles.h"
#include <zrbase/core/ZRError.h>
#include <zrbase/file/ZRFile.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <numeric>

namespace {

// A buffer whose byte j of buffer i is first + 16 × i + j.
std::unique_ptr<ZRAudioBuffer> counting(uint32_t count, uint32_t length, uint8_t first = 0)
{
    auto buffer = ZRAudioBuffer::bufferWithNumberOfBuffers(count, length);
    for (uint32_t index = 0; index < count; ++index) {
        auto* bytes = static_cast<uint8_t*>(buffer->bufferAtIndex(index));
        std::iota(bytes, bytes + length, uint8_t(first + 16 * index));
    }
    return buffer;
}

std::vector<uint8_t> bytes(const ZRAudioBuffer& buffer, uint32_t index)
{
    auto* data = static_cast<const uint8_t*>(buffer.bufferAtIndex(index));
    return data ? std::vector<uint8_t>(data, data + buffer.length()) : std::vector<uint8_t>();
}

std::vector<uint8_t> run(uint8_t first, uint8_t count)
{
    std::vector<uint8_t> result(count);
    std::iota(result.begin(), result.end(), first);
    return result;
}

}

TEST(ZRAudioBuffer, createsOwnedBuffersAndNoDataForZeroLength)
{
    ZRErrorPtr error;
    EXPECT_EQ(ZRAudioBuffer::bufferWithNumberOfBuffers(0, 16, &error), nullptr);
    EXPECT_EQ(error, nullptr);

    auto empty = ZRAudioBuffer::bufferWithNumberOfBuffers(2, 0);
    ASSERT_NE(empty, nullptr);
    EXPECT_EQ(empty->count(), 2u);
    EXPECT_EQ(empty->list()->mBuffers[0].mData, nullptr);
    EXPECT_FALSE(empty->hasBuffers());
    EXPECT_TRUE(empty->freeBufferListWhenDone());
    EXPECT_FALSE(empty->freeDataWhenDone());

    auto buffer = ZRAudioBuffer::bufferWithNumberOfBuffers(2, 16);
    EXPECT_TRUE(buffer->hasBuffers() && buffer->freeDataWhenDone());
    EXPECT_EQ(bytes(*buffer, 1), std::vector<uint8_t>(16, 0));
    EXPECT_EQ(buffer->bufferAtIndex(2), nullptr);

    ZRAudioBuffer none;
    none.setRange({ 0xFFFFFFFF, 5 });
    none.incrementRangeLocation();
    none.incrementRangeLength(3);
    EXPECT_EQ(none.range(), ZRMakeIndexRange(0, 8));
}

TEST(ZRAudioBuffer, copyPrimitiveChecksInOrderAndNeverLeavesTheBuffers)
{
    auto target = ZRAudioBuffer::bufferWithNumberOfBuffers(2, 16);
    auto source = counting(2, 16);
    auto code = [&](ZRAudioBuffer& into, ZRIndexRange range, uint32_t from, uint32_t position, uint32_t to) {
        ZRErrorPtr error;
        EXPECT_FALSE(into.copyRange(range, from, *source, position, to, &error));
        return error ? error->code() : -1;
    };
    ZRAudioBuffer unbuilt;
    EXPECT_EQ(code(unbuilt, { 0, 4 }, 9, 0, 9), 8);
    EXPECT_EQ(code(*target, { 0, 4 }, 9, 0, 2), 2);
    EXPECT_EQ(code(*target, { 0, 4 }, 2, 0, 1), 3);
    EXPECT_EQ(code(*target, { 0, 16 }, 0, 8, 0), 4);
    EXPECT_EQ(code(*target, { 8, 16 }, 0, 0, 0), 5);
    EXPECT_EQ(bytes(*target, 0), std::vector<uint8_t>(16, 0));

    ZRErrorPtr error;
    target->copyRange({ 0, 1 }, 0, *source, 16, 0, &error);
    EXPECT_EQ(error->domain(), "ZRErrorDomain");
    EXPECT_EQ(error->localizedDescription(), "Copying between buffers failed because an undefined error occurred: 4");

    ASSERT_TRUE(target->copyRange({ 4, 4 }, 1, *source, 2, 0));
    const std::vector<uint8_t> copied = bytes(*target, 0);
    EXPECT_EQ(std::vector<uint8_t>(copied.begin() + 2, copied.begin() + 6), run(20, 4));

    // Sums that wrap pass the checks as they always did, and then touch nothing.
    target->clear();
    EXPECT_TRUE(target->copyRange({ 0, 16 }, 0, *source, 0xFFFFFFF8, 0));
    EXPECT_TRUE(target->copyRange({ 0xFFFFFFF8, 16 }, 0, *source, 0, 1));
    EXPECT_EQ(bytes(*target, 0), std::vector<uint8_t>(16, 0));
    EXPECT_EQ(bytes(*target, 1), std::vector<uint8_t>(16, 0));
}

TEST(ZRAudioBuffer, wholeBufferCopiesReportCountAndLengthMismatchesWithTheirSwappedCodes)
{
    auto two = ZRAudioBuffer::bufferWithNumberOfBuffers(2, 16);
    ZRErrorPtr error;
    EXPECT_FALSE(two->copyRange({ 0, 16 }, *counting(3, 16), 0, &error));
    EXPECT_EQ(error->code(), 6);
    EXPECT_EQ(error->localizedDescription(), "Copying a buffer range failed because an undefined error occurred: 6");
    EXPECT_EQ(bytes(*two, 0), std::vector<uint8_t>(16, 0));

    EXPECT_FALSE(two->copyBufferAtIndex(0, *counting(1, 8), 0, &error));
    EXPECT_EQ(error->localizedDescription(), "Copying a buffer channel failed because an undefined error occurred: 7");

    ASSERT_TRUE(two->copyRange({ 4, 8 }, *counting(2, 16), 8));
    std::vector<uint8_t> expected = run(20, 8);
    expected.insert(expected.begin(), 8, 0);
    EXPECT_EQ(bytes(*two, 1), expected);
}

TEST(ZRAudioBuffer, copiesWholeOrListedBuffersAndKeepsTheRange)
{
    auto source = counting(3, 16);
    source->setRange({ 3, 7 });
    std::unique_ptr<ZRAudioBuffer> copy = source->copy();
    ASSERT_NE(copy, nullptr);
    EXPECT_EQ(bytes(*copy, 2), bytes(*source, 2));
    EXPECT_NE(copy->bufferAtIndex(2), source->bufferAtIndex(2));
    EXPECT_EQ(copy->range(), source->range());

    auto picked = ZRAudioBuffer::bufferWithAudioBuffer(*source, ZRIndexSet { 2, 0 }, true);
    ASSERT_EQ(picked->count(), 2u);
    EXPECT_EQ(bytes(*picked, 0), run(0, 16));
    EXPECT_EQ(bytes(*picked, 1), run(32, 16));

    auto view = ZRAudioBuffer::bufferWithAudioBuffer(*source, ZRIndexSet { 1, 2 }, false);
    EXPECT_EQ(view->bufferAtIndex(0), source->bufferAtIndex(1));
    EXPECT_TRUE(view->freeBufferListWhenDone());
    EXPECT_FALSE(view->freeDataWhenDone());
    EXPECT_EQ(view->range(), ZRMakeIndexRange(3, 7));

    ZRErrorPtr error;
    EXPECT_EQ(ZRAudioBuffer::bufferWithAudioBuffer(*source, ZRIndexSet { 1, 3 }, true, &error), nullptr);
    EXPECT_EQ(error->code(), 3);
}

TEST(ZRAudioBuffer, resizesCountAndLengthKeepingLeadingData)
{
    auto buffer = counting(1, 100);
    buffer->setChannelsPerBuffer(2);
    ASSERT_TRUE(buffer->setCount(3, nullptr));
    EXPECT_EQ(bytes(*buffer, 0), run(0, 100));
    EXPECT_EQ(bytes(*buffer, 2), std::vector<uint8_t>(100, 0));
    EXPECT_EQ(buffer->list()->mBuffers[2].mNumberChannels, 2u);

    buffer->setLength(10);
    EXPECT_EQ(bytes(*buffer, 0), run(0, 10));
    buffer->setCount(0);
    EXPECT_EQ(buffer->list(), nullptr);

    ZRAudioBuffer fresh;
    EXPECT_TRUE(fresh.setLength(12, nullptr));
    EXPECT_EQ(fresh.count(), 1u);
}

TEST(ZRAudioBuffer, removesBuffersByCopyingTheirData)
{
    ZRRecordingAlertPresenter alerts;
    auto buffer = counting(3, 8);
    buffer->removeBufferAtIndex(0);
    EXPECT_EQ(buffer->count(), 2u);
    EXPECT_EQ(bytes(*buffer, 0), run(16, 8));
    EXPECT_EQ(bytes(*buffer, 1), run(32, 8));

    buffer->removeAllBuffersExcept(1);
    EXPECT_EQ(buffer->count(), 1u);
    EXPECT_EQ(bytes(*buffer, 0), run(32, 8));
    EXPECT_TRUE(alerts.alerts().empty());

    buffer->removeAllBuffersExcept(5);
    ASSERT_EQ(alerts.alerts().size(), 1u);
    EXPECT_EQ(
        alerts.alerts()[0].informativeText, "Copying between buffers failed because an undefined error occurred: 3");
    EXPECT_EQ(buffer->count(), 1u);
}

TEST(ZRAudioBuffer, appendsAndDelays)
{
    auto buffer = counting(2, 4);
    auto source = counting(2, 16, 100);
    ASSERT_TRUE(buffer->appendRange({ 2, 3 }, *source));
    EXPECT_EQ(bytes(*buffer, 1), std::vector<uint8_t>({ 16, 17, 18, 19, 118, 119, 120 }));
    EXPECT_FALSE(buffer->appendRange({ 0, 1 }, *counting(1, 4)));
    ZRAudioBuffer fresh;
    ASSERT_TRUE(fresh.appendRange({ 14, 2 }, *source));
    EXPECT_EQ(bytes(fresh, 1), std::vector<uint8_t>({ 130, 131 }));

    // A delay line of length a against a block of length b: the block's first min(a, b) bytes enter the line,
    // whose last ones leave into the block. Render-sized exchanges wait on the stack, longer ones take another way.
    for (auto [lengthA, lengthB] : { std::pair(8u, 4u), std::pair(4u, 8u), std::pair(8u, 8u), std::pair(10000u, 6000u),
             std::pair(6000u, 10000u) }) {
        auto line = counting(1, lengthA, 1);
        auto block = counting(1, lengthB, 100);
        std::vector<uint8_t> a = bytes(*line, 0), b = bytes(*block, 0), expectedA, expectedB;
        const uint32_t m = std::min(lengthA, lengthB);
        expectedA.assign(b.begin(), b.begin() + m);
        expectedA.insert(expectedA.end(), a.begin(), a.end() - m);
        expectedB.assign(b.begin() + m, b.end());
        expectedB.insert(expectedB.end(), a.end() - m, a.end());
        ASSERT_TRUE(line->delayBufferAtIndex(0, *block, 0));
        EXPECT_EQ(bytes(*line, 0), expectedA) << lengthA << " against " << lengthB;
        EXPECT_EQ(bytes(*block, 0), expectedB) << lengthA << " against " << lengthB;
        EXPECT_FALSE(line->delayBufferAtIndex(1, *block, 0));
    }
    EXPECT_FALSE(ZRAudioBuffer().delayBufferAtIndex(0, *counting(1, 8), 0));
}

TEST(ZRAudioBuffer, wrapsForeignListsWithoutResizingOrFreeingThem)
{
    uint8_t data[2][8] = { { 1, 2, 3, 4, 5, 6, 7, 8 }, { 9, 9, 9, 9, 9, 9, 9, 9 } };
    alignas(AudioBufferList) uint8_t storage[ZRAudioBufferListSize(2)] = {};
    auto* list = reinterpret_cast<AudioBufferList*>(storage);
    list->mNumberBuffers = 2;
    list->mBuffers[0] = { 1, 8, data[0] };
    (list->mBuffers + 1)[0] = { 1, 8, data[1] };
    {
        ZRAudioBuffer wrapper(list);
        EXPECT_FALSE(wrapper.freeBufferListWhenDone() || wrapper.freeDataWhenDone());
        wrapper.setLength(12);
        EXPECT_NE(wrapper.list(), list);
        EXPECT_TRUE(wrapper.freeBufferListWhenDone());
        EXPECT_EQ(wrapper.list()->mBuffers[0].mDataByteSize, 12u);
        EXPECT_EQ(std::memcmp(wrapper.bufferAtIndex(0), data[0], 8), 0);
        wrapper.setCount(3);
        EXPECT_EQ(wrapper.count(), 3u);
    }
    EXPECT_EQ(list->mNumberBuffers, 2u);
    EXPECT_EQ(list->mBuffers[0].mData, data[0]);
    EXPECT_EQ(list->mBuffers[0].mDataByteSize, 8u);
    EXPECT_EQ(data[0][7], 8);

    ZRAudioBuffer wrapper(list);
    wrapper.clearChannel(1);
    wrapper.clearChannel(2);
    EXPECT_EQ(data[1][0], 0);
    wrapper.destroy();
    EXPECT_EQ(wrapper.list(), list);
}

TEST(ZRAudioBuffer, renderAndProcessResetsHandTheDataOver)
{
    auto buffer = counting(2, 16);
    auto other = counting(2, 8, 100);
    buffer->setToAudioBuffer(*other);
    EXPECT_EQ(buffer->bufferAtIndex(1), other->bufferAtIndex(1));
    EXPECT_EQ(buffer->length(), 8u);
    EXPECT_TRUE(buffer->freeDataWhenDone());

    buffer->resetForRenderWithLength(32);
    EXPECT_EQ(buffer->length(), 32u);
    EXPECT_EQ(buffer->bufferAtIndex(0), nullptr);
    EXPECT_FALSE(buffer->freeDataWhenDone());

    buffer->resetForProcessWithLength(64);
    EXPECT_TRUE(buffer->hasBuffers());
    EXPECT_EQ(bytes(*buffer, 1), std::vector<uint8_t>(64, 0));
    EXPECT_FALSE(buffer->freeDataWhenDone());
    EXPECT_EQ(bytes(*other, 0), run(100, 8));
}

TEST(ZRAudioBuffer, appendsToFilesAndReadsBackAtMostItsLength)
{
    const std::string folder = ZRTestScratchFolder("ZRAudioBufferFiles");
    const std::vector<std::string> paths { folder + "/0", folder + "/1" };
    for (const std::string& path : paths)
        ASSERT_TRUE(ZRFile::createFileAtPath(path, std::vector<uint8_t> { 7 }));
    auto buffer = counting(2, 4);
    EXPECT_FALSE(buffer->appendToFiles({ paths[0] }));
    ASSERT_TRUE(buffer->appendToFiles(paths));
    EXPECT_EQ(ZRTestContentsOfFile(paths[1]), std::string("\x07\x10\x11\x12\x13", 5));
    ZRErrorPtr error;
    EXPECT_FALSE(buffer->appendToFiles({ paths[0], folder + "/missing" }, &error));
    EXPECT_EQ(error->domain(), "NSPOSIXErrorDomain");
    ASSERT_TRUE(buffer->appendToFiles(paths));

    auto first = ZRFile::fileWithPath(paths[0]);
    auto second = ZRFile::fileWithPath(paths[1]);
    std::vector<ZRFile*> files { first.get(), second.get() };
    auto into = counting(2, 3, 50);
    EXPECT_EQ(into->readFromFiles(files, 2), 2);
    EXPECT_EQ(bytes(*into, 1), std::vector<uint8_t>({ 7, 16, 0 }));
    // A negative count reads like the largest one, but no further than the buffer.
    EXPECT_EQ(into->readFromFiles(files, -1), -1);
    EXPECT_EQ(bytes(*into, 1), std::vector<uint8_t>({ 17, 18, 19 }));
    EXPECT_EQ(into->readFromFiles(files, 100), 3);
    EXPECT_EQ(bytes(*into, 1), std::vector<uint8_t>({ 16, 17, 18 }));
    EXPECT_EQ(into->readFromFiles({ files.data(), 1 }, 3), 0);
}
