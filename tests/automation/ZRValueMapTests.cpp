#include <zrbase/automation/ZRValueMap.h>

#include <zrbase/host/foundation/ZRCoder.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <random>
#include <set>

namespace {

constexpr float notANumber = std::numeric_limits<float>::quiet_NaN();
constexpr float infinity = std::numeric_limits<float>::infinity();
constexpr int sweepSteps = 20000;

// The Bézier's y at the t where its x (end points at 0 and 1, inner points kept 1e-7 inside them as the map does)
// reaches the input, found by halving [0, 1] until the bracket stops shrinking.
double slowBezierOutput(const std::vector<ZRPoint>& points, double input)
{
    const bool cubic = points.size() == 4;
    const auto bernstein = [&](double t, auto coordinate) {
        const double u = 1 - t;
        if (!cubic)
            return coordinate(0) * u * u + 2 * coordinate(1) * t * u + coordinate(2) * t * t;
        return coordinate(0) * u * u * u + 3 * coordinate(1) * t * u * u + 3 * coordinate(2) * t * t * u
            + coordinate(3) * t * t * t;
    };
    const auto x = [&](int i) -> double {
        if (i == 0)
            return 0;
        if (i + 1 == int(points.size()))
            return 1;
        if (cubic && i == 1)
            return points[1].x > points[0].x + 1e-7 ? points[1].x : points[0].x + 1e-7;
        if (cubic && i == 2)
            return points[3].x - 1e-7 > points[2].x ? points[2].x : points[3].x - 1e-7;
        return points[i].x;
    };
    const auto y = [&](int i) -> double { return points[i].y; };
    double low = 0, high = 1;
    for (int i = 0; i < 200 && low < high; ++i) {
        const double middle = 0.5 * (low + high);
        if (middle == low || middle == high)
            break;
        (bernstein(middle, x) < input ? low : high) = middle;
    }
    return bernstein(0.5 * (low + high), y);
}

ZRPoint randomPoint(std::mt19937& random)
{
    std::uniform_real_distribution<float> unit(0, 1);
    return { unit(random), unit(random) };
}

// A map of the kind with its points moved at random through the setters, the y values rising from point to point.
ZRValueMap randomRisingMap(uint32_t type, std::mt19937& random)
{
    ZRValueMap map(type);
    if (type == ZRValueMapSegmented)
        for (int i = 0; i < 4; ++i)
            map.addControlPoint(randomPoint(random));
    for (uint32_t i = 0; i < map.numberOfControlPoints(); ++i)
        map.setControlPoint(randomPoint(random), i);
    std::vector<ZRPoint> points = map.controlPoints();
    std::vector<float> ys;
    for (const ZRPoint& point : points)
        ys.push_back(point.y);
    std::sort(ys.begin(), ys.end());
    for (size_t i = 0; i < points.size(); ++i)
        points[i].y = ys[i];
    if (type != ZRValueMapLogarithmic)
        map.setControlPoints(points);
    else
        map.setControlPoints({ { 0, ys.front() }, map.controlPointAtIndex(1), { 1, ys.back() } });
    return map;
}

}

TEST(ZRValueMap, everyKindStartsAsTheDiagonalAndPassesItsInputThrough)
{
    EXPECT_TRUE(ZRValueMap::map().controlPoints().empty());
    EXPECT_EQ(ZRValueMap::map().type(), ZRValueMapSegmented);
    for (uint32_t type : { ZRValueMapSegmented, ZRValueMapLogarithmic, ZRValueMapQuadratic, ZRValueMapCubic }) {
        const ZRValueMap map = ZRValueMap::mapWithType(type);
        EXPECT_FALSE(map.presetIsModified());
        EXPECT_TRUE(map.isEqualToDefaultMap());
        if (type == ZRValueMapCubic)
            EXPECT_EQ(map.controlPoints(),
                (std::vector<ZRPoint> { { 0, 0 }, { 1 / 3.0f, 1 / 3.0f }, { 2 / 3.0f, 2 / 3.0f }, { 1, 1 } }));
        else
            EXPECT_EQ(map.controlPoints(), (std::vector<ZRPoint> { { 0, 0 }, { 0.5f, 0.5f }, { 1, 1 } }));
        for (int i = 0; i <= 1000; ++i)
            EXPECT_NEAR(map.outputValueForInputValue(i / 1000.0f), i / 1000.0f, 2e-7) << type << " " << i;
    }

    ZRValueMap unknown(7);
    EXPECT_EQ(unknown.numberOfControlPoints(), 3u);
    unknown.setControlPoint({ 0.9f, 0.1f }, 1);
    EXPECT_EQ(unknown.controlPointAtIndex(1), (ZRPoint { 0.5f, 0.5f }));
    EXPECT_TRUE(unknown.presetIsModified());
    EXPECT_EQ(unknown.outputValueForInputValue(0.3f), 0.3f);
    EXPECT_EQ(unknown.outputValueForInputValue(-4.0f), -4.0f);

    ZRValueMap segmented;
    segmented.setNumberOfControlPoints(5);
    EXPECT_EQ(segmented.controlPointAtIndex(3), (ZRPoint { 0.75f, 0.75f }));
    EXPECT_EQ(segmented.controlPointAtIndex(5), (ZRPoint {}));
    segmented.setNumberOfControlPoints(1);
    EXPECT_TRUE(std::isnan(segmented.controlPointAtIndex(0).x));
    EXPECT_FALSE(segmented.isEqualToDefaultMap());
    segmented.setNumberOfControlPoints(0);
    EXPECT_TRUE(segmented.isEqualToDefaultMap());
    EXPECT_EQ(segmented.lastControlPoint(), (ZRPoint {}));
}

TEST(ZRValueMap, segmentedSettersKeepTheEdgesAndTheOrder)
{
    ZRValueMap map(ZRValueMapSegmented);
    map.setControlPoint({ 0.3f, 0.6f }, 0); // above the diagonal: onto the left edge
    EXPECT_EQ(map.controlPointAtIndex(0), (ZRPoint { 0, 0.6f }));
    map.setControlPoint({ 0.3f, 0.1f }, 0); // below it: onto the bottom edge
    EXPECT_EQ(map.controlPointAtIndex(0), (ZRPoint { 0.3f, 0 }));
    map.setControlPoint({ 0.9f, -2 }, 0); // not past the second point
    EXPECT_EQ(map.controlPointAtIndex(0), (ZRPoint { 0.5f, 0 }));
    map.setControlPoint({ 0.2f, 0.3f }, 2); // above the diagonal: onto the top edge, right of its neighbour
    EXPECT_EQ(map.controlPointAtIndex(2), (ZRPoint { 0.5f, 1 }));
    map.setControlPoint({ 0.9f, 0.95f }, 2);
    EXPECT_EQ(map.controlPointAtIndex(2), (ZRPoint { 0.9f, 1 }));
    map.setControlPoint({ 0.95f, 0.2f }, 2);
    EXPECT_EQ(map.controlPointAtIndex(2), (ZRPoint { 1, 0.2f }));
    map.setControlPoint({ 1.5f, notANumber }, 1); // clamped, then held between its neighbours
    EXPECT_EQ(map.controlPointAtIndex(1), (ZRPoint { 1, 0 }));
    map.setControlPoint({ -1, 0.5f }, 1);
    EXPECT_EQ(map.controlPointAtIndex(1), (ZRPoint { 0.5f, 0.5f }));
    map.setControlPoint({ 0.5f, 0.5f }, 3);
    EXPECT_EQ(map.numberOfControlPoints(), 3u);

    ZRValueMap three(ZRValueMapSegmented);
    EXPECT_EQ(three.addControlPoint({ 0.7f, 0.2f }), 2u);
    EXPECT_EQ(three.controlPointAtIndex(2), (ZRPoint { 0.7f, 0.2f }));
    EXPECT_EQ(three.addControlPoint({ 1.5f, 3 }), 4u); // appended as given
    EXPECT_EQ(three.lastControlPoint(), (ZRPoint { 1.5f, 3 }));
    EXPECT_TRUE(three.presetIsModified());
    three.removeControlPointAtIndex(4);
    three.removeControlPointAtIndex(9);
    EXPECT_EQ(three.numberOfControlPoints(), 4u);
    // Between the points the output is the straight line, outside them the nearer point's y.
    EXPECT_FLOAT_EQ(three.outputValueForInputValue(0.6f), 0.5f + (0.1f / 0.2f) * (0.2f - 0.5f));
    three.setControlPoints({ { 0.2f, 0.3f }, { 0.8f, 0.6f } });
    EXPECT_EQ(three.outputValueForInputValue(0.1f), 0.3f);
    EXPECT_EQ(three.outputValueForInputValue(0.9f), 0.6f);

    for (uint32_t type : { ZRValueMapLogarithmic, ZRValueMapQuadratic, ZRValueMapCubic }) {
        ZRValueMap other(type);
        const auto before = other.controlPoints();
        EXPECT_EQ(other.addControlPoint({ 0.5f, 0.2f }), ZRNotFound);
        other.removeControlPointAtIndex(1);
        EXPECT_EQ(other.controlPoints(), before);
        EXPECT_FALSE(other.presetIsModified());
    }
}

TEST(ZRValueMap, logarithmicQuadraticAndCubicSettersKeepTheirShapes)
{
    ZRValueMap logarithmic(ZRValueMapLogarithmic);
    logarithmic.setControlPoint({ 0.25f, 0.9f }, 1);
    EXPECT_EQ(logarithmic.controlPointAtIndex(1), (ZRPoint { 0.25f, 0.75f }));
    const float exponent = static_cast<float>(std::pow(10.0, -0.5));
    EXPECT_FLOAT_EQ(logarithmic.outputValueForInputValue(0.5f), std::pow(0.5f, exponent));
    logarithmic.setControlPoint({ 0.4f, 0.3f }, 0);
    logarithmic.setControlPoint({ 0.4f, 0.8f }, 2);
    EXPECT_EQ(logarithmic.controlPointAtIndex(0), (ZRPoint { 0, 0.3f }));
    EXPECT_EQ(logarithmic.controlPointAtIndex(2), (ZRPoint { 1, 0.8f }));
    EXPECT_FLOAT_EQ(logarithmic.outputValueForInputValue(0.5f), std::pow(0.5f, exponent) * 0.5f + 0.3f);

    ZRValueMap quadratic(ZRValueMapQuadratic);
    quadratic.setControlPoint({ 0.7f, 0.4f }, 0);
    quadratic.setControlPoint({ 1.7f, -0.4f }, 1);
    quadratic.setControlPoint({ 0.2f, 0.6f }, 2);
    EXPECT_EQ(quadratic.controlPoints(), (std::vector<ZRPoint> { { 0, 0.4f }, { 1, 0 }, { 1, 0.6f } }));

    ZRValueMap cubic(ZRValueMapCubic);
    cubic.setControlPoint({ 0.9f, 0.2f }, 0); // below the diagonal, held left of every other point
    EXPECT_EQ(cubic.controlPointAtIndex(0), (ZRPoint { 1 / 3.0f, 0 }));
    cubic.setControlPoint({ 0.1f, 0.5f }, 1);
    EXPECT_EQ(cubic.controlPointAtIndex(1), (ZRPoint { 1 / 3.0f, 0.5f }));
    cubic.setControlPoint({ 0.1f, 0.2f }, 3);
    EXPECT_EQ(cubic.controlPointAtIndex(3), (ZRPoint { 2 / 3.0f, 1 }));
    EXPECT_EQ(cubic.outputValueForInputValue(0.2f), 0); // before the first point
    EXPECT_EQ(cubic.outputValueForInputValue(0.9f), 1); // after the last
}

TEST(ZRValueMap, risingPointsGiveRisingCurvesThatEndAtTheirEndPoints)
{
    std::mt19937 random(11);
    for (uint32_t type : { ZRValueMapSegmented, ZRValueMapLogarithmic, ZRValueMapQuadratic, ZRValueMapCubic }) {
        for (int trial = 0; trial < 40; ++trial) {
            const ZRValueMap map = randomRisingMap(type, random);
            const ZRPoint first = map.controlPointAtIndex(0), last = map.lastControlPoint();
            EXPECT_NEAR(map.outputValueForInputValue(0), first.y, 1e-6);
            EXPECT_NEAR(map.outputValueForInputValue(1), last.y, 1e-6);
            float previous = -1;
            for (int i = 0; i <= sweepSteps; ++i) {
                const float output = map.outputValueForInputValue(static_cast<float>(i) / sweepSteps);
                ASSERT_GE(output, previous - 1e-6f) << type << " " << trial << " " << i;
                ASSERT_GE(output, first.y - 1e-6f);
                ASSERT_LE(output, last.y + 1e-6f);
                previous = output;
            }
        }
    }
}

TEST(ZRValueMap, bezierSolversAgreeWithBisectionAlsoOnEdgesAndCoincidingPoints)
{
    std::mt19937 random(5);
    std::uniform_real_distribution<float> unit(0, 1);
    std::vector<std::vector<ZRPoint>> curves = {
        { { 0, 0 }, { 0.5f, 1 }, { 1, 0 } }, // the linear case of the quadratic
        { { 0, 0 }, { 0, 1 }, { 1, 1 } }, { { 0, 1 }, { 1, 0 }, { 1, 0.5f } },
        { { 0, 0 }, { 0, 1 }, { 1, 0 }, { 1, 1 } }, // inner points on the edges
        { { 0, 0 }, { 1, 1 }, { 0, 0 }, { 1, 1 } }, // x rises flat through t = 0.5
        { { 0, 0 }, { 0.5f, 0.2f }, { 0.5f, 0.9f }, { 1, 1 } }, // coinciding inner x
        { { 0, 0 }, { 0, 0 }, { 1, 1 }, { 1, 1 } },
        { { 0, 0.2f }, { 1 / 3.0f, 0.7f }, { 2 / 3.0f, 0.1f }, { 1, 0.9f } }, // the leading x coefficient vanishes
    };
    for (int i = 0; i < 60; ++i) {
        std::vector<ZRPoint> curve { { 0, unit(random) } };
        for (int inner = 0; inner < (i % 2 ? 2 : 1); ++inner)
            curve.push_back({ unit(random), unit(random) });
        curve.push_back({ 1, unit(random) });
        curves.push_back(curve);
    }
    for (const auto& curve : curves) {
        ZRValueMap map(curve.size() == 4 ? ZRValueMapCubic : ZRValueMapQuadratic);
        map.setControlPoints(curve);
        for (int i = 0; i <= 2000; ++i) {
            const float input = i / 2000.0f;
            ASSERT_NEAR(map.outputValueForInputValue(input), slowBezierOutput(curve, input), 2e-5)
                << ZRStringFromPoint(curve[1]) << " " << ZRStringFromPoint(curve[2]) << " at " << input;
        }
    }
}

TEST(ZRValueMap, pointsOutsideTheSquareOrNotANumberNeverHang)
{
    const std::vector<std::vector<ZRPoint>> odd = {
        {},
        { { notANumber, notANumber } },
        { { 0, 0 }, { notANumber, 0.5f }, { 1, 1 } },
        { { -3, 2 }, { 7, -1 }, { 0.5f, infinity }, { -infinity, 4 } },
        { { 0, 0 }, { infinity, -infinity }, { notANumber, 1 }, { 1, 1 } },
        { { 0.5f, 0.5f }, { 0.5f, 0.5f }, { 0.5f, 0.5f }, { 0.5f, 0.5f } },
        { { 1, 0 }, { 0, 1 }, { 0, 0 } },
        { { 0, 0 }, { 2, 1 }, { 1, 1 } },
        { { 0, 0 }, { -2, 1 }, { 1, 1 } },
    };
    for (uint32_t type : { ZRValueMapSegmented, ZRValueMapLogarithmic, ZRValueMapQuadratic, ZRValueMapCubic }) {
        for (const auto& points : odd) {
            ZRValueMap map(type);
            map.setControlPoints(points);
            for (float input : { -1.0f, 0.0f, 0.25f, 0.5f, 1.0f, 2.0f, notANumber, infinity, -infinity })
                map.outputValueForInputValue(input);
            for (uint32_t i = 0; i < map.numberOfControlPoints(); ++i)
                map.setControlPoint({ 0.5f, 0.5f }, i);
            for (uint32_t i = 0; i < map.numberOfControlPoints(); ++i) {
                const ZRPoint point = map.controlPointAtIndex(i);
                if (!std::isnan(point.x) && type != ZRValueMapLogarithmic) {
                    EXPECT_GE(point.y, 0);
                    EXPECT_LE(point.y, 1);
                }
            }
            map.addControlPoint({ notANumber, 2 });
            map.reset();
        }
    }
    ZRValueMap fromState;
    fromState.setState({ { "type", 3 }, { "controlPoints", ZRArray { "{nan, inf}", "garbage", 5, "{1e40, -1e40}" } } });
    EXPECT_EQ(fromState.numberOfControlPoints(), 4u);
    fromState.outputValueForInputValue(0.5f);
}

TEST(ZRValueMap, stateAndArchiveRoundTripsKeepKindPointsAndName)
{
    ZRValueMap map(ZRValueMapSegmented);
    map.addControlPoint({ 0.25f, 0.75f });
    const ZRDictionary state = map.state();
    EXPECT_EQ(state.at("type"), ZRPropertyList(0));
    EXPECT_EQ(state.at("controlPoints"), ZRPropertyList(ZRArray { "{0, 0}", "{0.25, 0.75}", "{0.5, 0.5}", "{1, 1}" }));
    EXPECT_EQ(state.at("modified"), ZRPropertyList(true));
    EXPECT_FALSE(state.contains("name"));

    ZRValueMap restored;
    restored.setState(state);
    EXPECT_EQ(restored.controlPoints(), map.controlPoints());
    EXPECT_TRUE(restored.presetIsModified());
    EXPECT_FALSE(restored.presetName());
    EXPECT_EQ(map.copy().controlPoints(), map.controlPoints());

    ZRDictionary named = ZRValueMap(ZRValueMapCubic).state();
    named["name"] = "Gentle";
    named["controlPoints"] = ZRArray { "{0, 0.1}", "{0.2, 0.9}", "{0.6, 0.3}", "{1, 1}" };
    named["modified"] = true;
    restored.setState(named);
    EXPECT_EQ(restored.type(), ZRValueMapCubic);
    EXPECT_EQ(restored.controlPointAtIndex(1), (ZRPoint { 0.2f, 0.9f }));
    EXPECT_EQ(restored.presetName(), "Gentle");
    EXPECT_FALSE(restored.presetIsModified());

    // Only the keys present are applied: points alone keep the kind.
    restored.setState({ { "controlPoints", ZRArray { "{0, 1}", "{1, 0}" } } });
    EXPECT_EQ(restored.type(), ZRValueMapCubic);
    EXPECT_EQ(restored.numberOfControlPoints(), 2u);

    ZRKeyedArchiver archiver;
    ZRValueMap(ZRValueMapLogarithmic).encodeWithCoder(archiver);
    const ZRData archive = archiver.finishEncoding("ZRValueMap");
    const auto unarchiver = ZRKeyedUnarchiver::unarchiverWithData(archive);
    ASSERT_TRUE(unarchiver);
    EXPECT_TRUE(unarchiver->containsValueForKey("valueMapState"));
    const ZRValueMap unarchived(*unarchiver);
    EXPECT_EQ(unarchived.type(), ZRValueMapLogarithmic);
    EXPECT_EQ(unarchived.controlPoints(), ZRValueMap(ZRValueMapLogarithmic).controlPoints());
}

TEST(ZRValueMap, presetsLoadByNameAndKeepTheirKindsShapes)
{
    const auto presets = ZRValueMap::presets();
    ASSERT_GE(presets.size(), 12u);
    std::set<uint32_t> kinds;
    for (const auto& preset : presets) {
        const std::string name = preset.at("name").stringValue();
        const auto map = ZRValueMap::mapWithPresetName(name);
        ASSERT_TRUE(map) << name;
        kinds.insert(map->type());
        EXPECT_EQ(map->presetName(), name);
        EXPECT_FALSE(map->presetIsModified());
        const uint32_t expectedCount = map->type() == ZRValueMapCubic ? 4 : 3;
        if (map->type() != ZRValueMapSegmented) {
            EXPECT_EQ(map->numberOfControlPoints(), expectedCount) << name;
        }
        // A preset is a shape the setters could have made: setting each point where it is changes nothing.
        ZRValueMap edited = *map;
        for (uint32_t i = 0; i < edited.numberOfControlPoints(); ++i)
            edited.setControlPoint(edited.controlPointAtIndex(i), i);
        EXPECT_EQ(edited.controlPoints(), map->controlPoints()) << name;
        const float first = map->outputValueForInputValue(0), last = map->outputValueForInputValue(1);
        float previous = first;
        for (int i = 1; i <= 1000; ++i) {
            const float output = map->outputValueForInputValue(i / 1000.0f);
            EXPECT_GE((output - previous) * (last - first), -1e-6f) << name << " " << i;
            previous = output;
        }
    }
    EXPECT_EQ(kinds.size(), 4u);
    EXPECT_FALSE(ZRValueMap::mapWithPresetName("No Such Preset"));
}
