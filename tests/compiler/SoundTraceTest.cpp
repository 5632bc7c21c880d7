#include <gtest/gtest.h>

#include <cmath>

#include "compiler/Levels.h"
#include "compiler/SoundTrace.h"

// A graph of cells, told by its portals: where each stands and which two cells it joins.
class SoundGraph {
public:
    SoundGraph() : ws(world, options) {}

    void Join(int a, int b, const D3DVECTOR& pivot) {
        ws.cell.resize(std::max(ws.cell.size(), static_cast<size_t>(std::max(a, b)) + 1));
        const auto number = static_cast<int32_t>(ws.portal.size());
        PORTAL& portal = ws.portal.emplace_back();
        portal.pivot = pivot;
        portal.cell = {a, b};
        for (int side = 0; side < 2; ++side) {
            CELL& cell = ws.cell[static_cast<size_t>(portal.cell[static_cast<size_t>(side)])];
            cell.portals.push_back(number);
            cell.portalside.push_back(side);
        }
    }
    std::vector<SoundTraceData> Trace(int threads = 1) {
        options.threads = threads;
        CompileProgress progress;
        std::vector<SoundTraceData> data;
        EXPECT_TRUE(CountSoundData(ws, data, progress));
        return data;
    }

    World world;
    CompileOptions options;
    WorldSubdivide ws;
};

static void ExpectPath(const SoundTraceData& path, int distance, int start, int end) {
    EXPECT_EQ(path.distance, distance);
    EXPECT_EQ(path.portal_start, start);
    EXPECT_EQ(path.portal_end, end);
}

TEST(SoundTrace, CountsFollowThePortals) {
    const std::pair<int, int> counts[] = {
        {0, 0}, {1, 0}, {2, 1}, {3, 3}, {4, 6}, {255, 254 * 255 / 2}, {256, 255 * 256 / 2}, {1024, 255 * 256 / 2}};
    for (const auto& [portals, count] : counts)
        EXPECT_EQ(SoundTraceCount(portals), count) << portals;
}

TEST(SoundTrace, ARowOfRooms) {
    SoundGraph graph; // 0 - 1 - 2 - 3, with a portal that leads nowhere beside it
    graph.Join(0, 1, {0, 0, 0});
    graph.Join(1, 2, {30, 40, 0});
    graph.Join(2, 3, {30, 40, 100.75f});
    graph.Join(4, 5, {0, 0, 0});
    const std::vector<SoundTraceData> data = graph.Trace();
    ASSERT_EQ(data.size(), 6u);
    ExpectPath(data[0], 0, 0, 0);   // (1,0): the portal they share
    ExpectPath(data[1], 50, 1, 0);  // (2,0): begins in cell 2
    ExpectPath(data[2], 0, 1, 1);   // (2,1)
    ExpectPath(data[3], 150, 2, 0); // (3,0): 50 + 100.75, cut
    ExpectPath(data[4], 100, 2, 1); // (3,1)
    ExpectPath(data[5], 0, 2, 2);   // (3,2)
}

TEST(SoundTrace, TwoPortalsHaveOnePairAndNoPathReadsSo) {
    SoundGraph graph;
    graph.Join(0, 2, {0, 0, 0});
    graph.Join(1, 3, {10, 0, 0});
    const std::vector<SoundTraceData> data = graph.Trace();
    ASSERT_EQ(data.size(), 1u);
    ExpectPath(data[0], 65535, 0, 0);
}

TEST(SoundTrace, AFarWayIsCapped) {
    SoundGraph graph;
    graph.Join(0, 1, {0, 0, 0});
    graph.Join(1, 2, {70000, 0, 0});
    graph.Join(2, 3, {70010, 0, 0});
    const std::vector<SoundTraceData> data = graph.Trace();
    EXPECT_EQ(data[1].distance, 65535) << "(2,0)";
}

// The shortest ways by another method: Floyd and Warshall over all pairs of portals.
TEST(SoundTrace, EqualsAllPairsOnRandomGraphs) {
    Dice dice(77);
    for (int round = 0; round < 20; ++round) {
        SoundGraph graph;
        const int cells = 2 + dice.Below(12);
        for (int p = 0; p < cells + dice.Below(2 * cells); ++p) {
            const int a = dice.Below(cells), b = (a + 1 + dice.Below(cells - 1)) % cells;
            graph.Join(a, b, dice.Point(1000));
        }
        const size_t n = graph.ws.portal.size();
        std::vector<std::vector<double>> way(n, std::vector<double>(n, 1e9));
        for (const CELL& cell : graph.ws.cell)
            for (int p : cell.portals)
                for (int q : cell.portals)
                    way[static_cast<size_t>(p)][static_cast<size_t>(q)] = static_cast<double>(Magnitude(
                        graph.ws.portal[static_cast<size_t>(p)].pivot - graph.ws.portal[static_cast<size_t>(q)].pivot));
        for (size_t k = 0; k < n; ++k)
            for (size_t i = 0; i < n; ++i)
                for (size_t j = 0; j < n; ++j)
                    way[i][j] = std::min(way[i][j], way[i][k] + way[k][j]);
        const std::vector<SoundTraceData> data = graph.Trace(), threaded = graph.Trace(3);
        ASSERT_EQ(data.size(), threaded.size());
        for (int a = 1; a < static_cast<int>(graph.ws.cell.size()); ++a)
            for (int b = 0; b < a; ++b) {
                const size_t at = static_cast<size_t>(a) * static_cast<size_t>(a - 1) / 2 + static_cast<size_t>(b);
                if (at >= data.size())
                    continue;
                double shortest = 1e9;
                for (int p : graph.ws.cell[static_cast<size_t>(a)].portals)
                    for (int q : graph.ws.cell[static_cast<size_t>(b)].portals)
                        shortest = std::min(shortest, way[static_cast<size_t>(p)][static_cast<size_t>(q)]);
                const double expected = shortest >= 1e9 ? 65535 : shortest;
                EXPECT_NEAR(data[at].distance, std::floor(expected), 1.0) << "pair " << a << ", " << b;
                EXPECT_EQ(data[at].distance, threaded[at].distance);
                EXPECT_EQ(data[at].portal_start, threaded[at].portal_start);
                EXPECT_EQ(data[at].portal_end, threaded[at].portal_end);
            }
    }
}
