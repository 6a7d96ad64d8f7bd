#include "audio/ZRChannelMap.h"
#include "host/foundation/ZRCoder.h"

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

TEST(ZRChannelMap, emptyAndIdentityMaps)
{
    const ZRChannelMap empty;
    EXPECT_EQ(empty.inputCount(), 0u);
    EXPECT_EQ(empty.outputCount(), 1u);
    EXPECT_TRUE(empty.ties().empty());
    EXPECT_EQ(empty.description(), "(\n)");

    ZRChannelMap identity = ZRChannelMap::defaultMapForCount(2);
    EXPECT_EQ(identity.ties(), points({ { 0, 0 }, { 1, 1 } }));
    EXPECT_EQ(identity.inputCount(), 2u);
    EXPECT_EQ(identity.outputCount(), 2u);
    EXPECT_EQ(identity.description(), "(\n    \"NSPoint: {0, 0}\",\n    \"NSPoint: {1, 1}\"\n)");

    identity.tieInput(0, 5);
    identity.mapDefaultForCount(1);
    EXPECT_EQ(identity.ties(), points({ { 0, 0 } }));
}

TEST(ZRChannelMap, tyingGrowsTheInputsAndAnswersQueries)
{
    ZRChannelMap map;
    map.tieInput(3, 0);
    EXPECT_EQ(map.inputCount(), 4u);
    EXPECT_EQ(map.tiedInputs(), ZRIndexSet(3));
    EXPECT_TRUE(map.outputTiesForInput(1).isEmpty());

    map.tieInputs(ZRIndexSet { 0, 1 }, ZRIndexSet { 4, 2 });
    map.tieInputs(ZRIndexSet { 1 }, 7);
    map.tieInput(0, ZRIndexSet { 2 });
    map.tieInputs(ZRIndexSet(), ZRIndexSet { 9 });
    EXPECT_EQ(map.ties(), points({ { 0, 2 }, { 0, 4 }, { 1, 2 }, { 1, 4 }, { 1, 7 }, { 3, 0 } }));
    EXPECT_EQ(map.outputCount(), 8u);
    EXPECT_EQ(map.tiedInputCount(), 3u);
    EXPECT_EQ(map.tiedOutputs(), (ZRIndexSet { 0, 2, 4, 7 }));
    EXPECT_EQ(map.tiedOutputCount(), 4u);
    EXPECT_EQ(map.inputTiesForOutput(4), (ZRIndexSet { 0, 1 }));
    EXPECT_TRUE(map.isInput(1, 7));
    EXPECT_FALSE(map.isInput(2, 7));
    EXPECT_FALSE(map.isInput(4, 0));
    EXPECT_TRUE(map.outputTiesForInput(4).isEmpty());

    // The set handed out is the map's own, so it follows later edits.
    const ZRIndexSet& outputs = map.outputTiesForInput(0);
    map.tieInput(0, 3);
    EXPECT_TRUE(outputs.containsIndex(3));
}

TEST(ZRChannelMap, untyingTrimsEmptyInputsAtTheEndOnly)
{
    ZRChannelMap map;
    map.tieInput(0, 0);
    map.tieInput(1, 1);
    map.tieInput(4, 2);
    map.untieInput(1, 1);
    EXPECT_EQ(map.inputCount(), 5u);
    map.untieInput(4, 2);
    EXPECT_EQ(map.inputCount(), 1u);
    map.untieInput(9, 0);
    map.clearInput(9);
    EXPECT_EQ(map.inputCount(), 1u);

    map.tieInput(2, ZRIndexSet { 1, 3 });
    map.clearInput(2);
    EXPECT_EQ(map.inputCount(), 1u);

    map.tieInput(2, 3);
    map.clearOutput(3);
    EXPECT_EQ(map.inputCount(), 3u);
    EXPECT_EQ(map.tiedInputs(), ZRIndexSet(0));
    map.clear();
    EXPECT_EQ(map.inputCount(), 0u);
}

TEST(ZRChannelMap, pointsTieAndUntie)
{
    ZRChannelMap map;
    map.tie(ZRMakePoint(2.9f, 1.2f));
    map.tie(ZRMakePoint(-3.0f, -0.5f));
    EXPECT_EQ(map.ties(), points({ { 0, 0 }, { 2, 1 } }));

    map.untie(ZRMakePoint(-1.0f, 0.0f));
    map.untie(ZRMakePoint(0.0f, -1.0f));
    EXPECT_TRUE(map.isInput(0, 0));
    map.untie(ZRMakePoint(2.7f, 1.9f));
    EXPECT_EQ(map.ties(), points({ { 0, 0 } }));
    EXPECT_EQ(map.inputCount(), 1u);
}

TEST(ZRChannelMap, stateRoundTripsAndIgnoresWhatItCannotRead)
{
    ZRChannelMap map;
    map.tieInput(0, ZRIndexSet { 1, 0 });
    map.tieInput(3, 2);
    map.clearOutput(2);
    ASSERT_EQ(map.inputCount(), 4u);
    const ZRData state = map.state();
    EXPECT_EQ(ZRChannelMap::mapWithState(state), map);

    ZRChannelMap kept = ZRChannelMap::defaultMapForCount(3);
    const ZRChannelMap before = kept;
    const ZRData garbage = { 'b', 'p', 'l', 'i', 's', 't', '0', '0', 1, 2, 3 };
    kept.setState(garbage);
    kept.setState({});
    kept.setState(ZRKeyedArchiver::archivedDataWithRootObject(ZRPropertyList("not an array")));
    kept.setState(ZRKeyedArchiver::archivedDataWithRootObject(ZRArray { ZRArray { 1 }, ZRArray { -1 } }));
    kept.setState(ZRKeyedArchiver::archivedDataWithRootObject(ZRArray { ZRPropertyList(ZRArray { 1.5 }) }));
    kept.setState(ZRKeyedArchiver::archivedDataWithRootObject(ZRArray { ZRPropertyList(ZRArray { 4294967296LL }) }));
    EXPECT_EQ(kept, before);

    // Outputs in any order read as a set.
    kept.setState(ZRKeyedArchiver::archivedDataWithRootObject(ZRArray { ZRArray {}, ZRArray { 5, 1, 5 } }));
    EXPECT_EQ(kept.ties(), points({ { 1, 1 }, { 1, 5 } }));
}
