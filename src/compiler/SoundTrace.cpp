#include "compiler/SoundTrace.h"

#include <algorithm>

namespace {

constexpr float UNREACHED = -1.0f;
constexpr float LONGEST_PATH = 10000000.0f;
constexpr int NO_PORTAL = -1;

struct PortalInfoItem {
    bool is_checked = false;
    float path_len = UNREACHED;  // of the best path found
    int portal_from = NO_PORTAL; // the portal before this one on it
    int cell_to = -1;            // the cell into which one steps through this portal on it
};

// Shortest ways from one cell to all portals: a search of Dijkstra's kind (1959) whose nodes are the portals.
class PortalSearch {
public:
    explicit PortalSearch(const WorldSubdivide& subdivision) : ws(subdivision) {}

    void Run(int cell_start) {
        info.assign(ws.portal.size(), {});
        reached.clear();
        VisitPortals(cell_start, NO_PORTAL);
        for (int selected = Nearest(); selected != NO_PORTAL; selected = Nearest()) {
            info[static_cast<size_t>(selected)].is_checked = true;
            VisitPortals(info[static_cast<size_t>(selected)].cell_to, selected);
        }
    }

    SoundTraceData PathTo(int cell_end) const {
        SoundTraceData path;
        int end = NO_PORTAL;
        if (IsCell(cell_end))
            for (const int32_t p : ws.cell[static_cast<size_t>(cell_end)].portals) {
                const float length = info[static_cast<size_t>(p)].path_len;
                if (length >= 0 && (end == NO_PORTAL || length < info[static_cast<size_t>(end)].path_len))
                    end = p;
            }
        if (end == NO_PORTAL)
            return path;
        int start = end;
        while (info[static_cast<size_t>(start)].portal_from != NO_PORTAL)
            start = info[static_cast<size_t>(start)].portal_from;
        path.distance =
            static_cast<uint16_t>(std::min(info[static_cast<size_t>(end)].path_len, static_cast<float>(NO_SOUND_PATH)));
        path.portal_start = static_cast<uint8_t>(start);
        path.portal_end = static_cast<uint8_t>(end);
        return path;
    }

private:
    bool IsCell(int cell) const { return cell >= 0 && static_cast<size_t>(cell) < ws.cell.size(); }

    // The portals of a cell that is reached through `from`, or in which the search begins.
    void VisitPortals(int cell, int from) {
        if (!IsCell(cell))
            return;
        const CELL& entered = ws.cell[static_cast<size_t>(cell)];
        for (size_t k = 0; k < entered.portals.size() && k < entered.portalside.size(); ++k) {
            const int p = entered.portals[k];
            if (p == from)
                continue;
            const PORTAL& portal = ws.portal[static_cast<size_t>(p)];
            PortalInfoItem& item = info[static_cast<size_t>(p)];
            float length = 0;
            if (from != NO_PORTAL)
                length = Magnitude(portal.pivot - ws.portal[static_cast<size_t>(from)].pivot) +
                         info[static_cast<size_t>(from)].path_len;
            const bool known = item.path_len >= 0;
            if (known && !(length < item.path_len))
                continue;
            if (!known)
                reached.push_back(p);
            item = {false, length, from, portal.cell[static_cast<size_t>(entered.portalside[k] ^ 1)]};
        }
    }

    // The unchecked portal with the shortest way, the first found on a tie.
    int Nearest() const {
        int nearest = NO_PORTAL;
        float shortest = LONGEST_PATH;
        for (const int p : reached)
            if (const PortalInfoItem& item = info[static_cast<size_t>(p)];
                !item.is_checked && item.path_len < shortest) {
                nearest = p;
                shortest = item.path_len;
            }
        return nearest;
    }

    const WorldSubdivide& ws;
    std::vector<PortalInfoItem> info; // by portal
    std::vector<int> reached;         // in the order of finding
};

int HighestCell(int portal_count) { return portal_count > MAX_SOUND_PORTALS ? MAX_SOUND_PORTALS : portal_count - 1; }

} // namespace

int SoundTraceCount(int portal_count) {
    const int k = HighestCell(portal_count);
    return k > 0 ? k * (k + 1) / 2 : 0;
}

bool CountSoundData(const WorldSubdivide& ws, std::vector<SoundTraceData>& data, CompileProgress& progress) {
    const int portals = static_cast<int>(ws.portal.size());
    data.assign(static_cast<size_t>(SoundTraceCount(portals)), {});
    // One search from cell a serves all pairs (a, b): they stand side by side. The longest rows come first.
    const int rows = data.empty() ? 0 : HighestCell(portals);
    return RunStage(progress, rows, ws.options.threads, [&](int row, int, StageState& state) {
        const int a = rows - row;
        PortalSearch search(ws);
        search.Run(a);
        for (int b = 0; b < a && !state.Stopped(); ++b)
            data[static_cast<size_t>(a) * static_cast<size_t>(a - 1) / 2 + static_cast<size_t>(b)] = search.PathTo(b);
        state.Step(a);
    });
}
