#include <zrbase/audio/ZRChannelMap.h>
#include <zrbase/host/foundation/ZRCoder.h>

#include <gtest/gtest.h>

namespace {

std::vector<ZRPoint> points(std::initializer_list<std::pair<float, float>> ties)
{
    std::vector<ZRPoint> result;
    for (auto [input, output] : ties)
        result.push_back(ZRMakePoint(input, output));
    return result;
}

}

TEST(ZRChannelMap, tiesGrowTheMapAndAnswerQueries)
{
    ZRChannelMap map;
    EXPECT_EQ(map.outputCount(), 1u);
    EXPECT_EQ(map.description(), "(\n)");
    map.tieInput(3, 0);
    EXPECT_EQ(map.inputCount(), 4u);
    EXPECT_EQ(map.tiedInputs(), ZRIndexSet(3));

    map.tieInputs(ZRIndexSet { 0, 1 }, ZRIndexSet { 4, 2 });
    map.tieInputs(ZRIndexSet { 1 }, 7);
    map.tieInputs(ZRIndexSet(), ZRIndexSet { 9 });
    map.tie(ZRMakePoint(-3.0f, 2.9f));
    EXPECT_EQ(map.ties(), points({ { 0, 2 }, { 0, 4 }, { 1, 2 }, { 1, 4 }, { 1, 7 }, { 3, 0 } }));
    EXPECT_EQ(map.outputCount(), 8u);
    EXPECT_EQ(map.tiedInputCount(), 3u);
    EXPECT_EQ(map.tiedOutputs(), (ZRIndexSet { 0, 2, 4, 7 }));
    EXPECT_EQ(map.inputTiesForOutput(4), (ZRIndexSet { 0, 1 }));
    EXPECT_TRUE(map.isInput(1, 7));
    EXPECT_FALSE(map.isInput(2, 7));
    EXPECT_FALSE(map.isInput(4, 0));
    EXPECT_TRUE(map.outputTiesForInput(4).isEmpty());

    // The set handed out is the map's own, so it follows later edits.
    const ZRIndexSet& outputs = map.outputTiesForInput(0);
    map.tieInput(0, ZRIndexSet { 3 });
    EXPECT_TRUE(outputs.containsIndex(3));

    map.mapDefaultForCount(2);
    EXPECT_EQ(map, ZRChannelMap::defaultMapForCount(2));
    EXPECT_EQ(map.ties(), points({ { 0, 0 }, { 1, 1 } }));
    EXPECT_EQ(map.description(), "(\n    \"NSPoint: {0, 0}\",\n    \"NSPoint: {1, 1}\"\n)");
}

TEST(ZRChannelMap, untyingTrimsEmptyInputsAtTheEndOnly)
{
    ZRChannelMap map;
    map.tieInput(0, 0);
    map.tieInput(1, 1);
    map.tieInput(4, 2);
    map.untieInput(1, 1);
    EXPECT_EQ(map.inputCount(), 5u);
    map.untie(ZRMakePoint(4.7f, 2.9f));
    EXPECT_EQ(map.inputCount(), 1u);
    map.untie(ZRMakePoint(-1.0f, 0.0f));
    map.untieInput(9, 0);
    map.clearInput(9);
    EXPECT_TRUE(map.isInput(0, 0));

    map.tieInput(2, ZRIndexSet { 1, 3 });
    map.clearInput(2);
    EXPECT_EQ(map.inputCount(), 1u);
    map.tieInput(2, 3);
    map.clearOutput(3);
    EXPECT_EQ(map.inputCount(), 3u);
    EXPECT_EQ(map.tiedInputs(), ZRIndexSet(0));
}

TEST(ZRChannelMap, stateRoundTripsAndIgnoresWhatItCannotRead)
{
    ZRChannelMap map;
    map.tieInput(0, ZRIndexSet { 1, 0 });
    map.tieInput(3, 2);
    map.clearOutput(2);
    ASSERT_EQ(map.inputCount(), 4u);
    EXPECT_EQ(ZRChannelMap::mapWithState(map.state()), map);

    ZRChannelMap kept = ZRChannelMap::defaultMapForCount(3);
    const ZRData garbage = { 'b', 'p', 'l', 'i', 's', 't', '0', '0', 1, 2, 3 };
    for (const ZRData& state : { garbage, ZRKeyedArchiver::archivedDataWithRootObject(ZRPropertyList("text")),
             ZRKeyedArchiver::archivedDataWithRootObject(ZRArray { ZRArray { 1 }, ZRArray { -1 } }),
             ZRKeyedArchiver::archivedDataWithRootObject(ZRArray { ZRArray { 1 }, ZRArray { 1.5 } }),
             ZRKeyedArchiver::archivedDataWithRootObject(ZRArray { ZRArray { 1 }, ZRArray { 4294967296LL } }) })
        kept.setState(state);
    EXPECT_EQ(kept, ZRChannelMap::defaultMapForCount(3));

    kept.setState(ZRKeyedArchiver::archivedDataWithRootObject(ZRArray { ZRArray {}, ZRArray { 5, 1, 5 } }));
    EXPECT_EQ(kept.ties(), points({ { 1, 1 }, { 1, 5 } }));
}
