// A tracklist; what was read is written and read again.
#include "definitions/Track.h"
#include "fuzz/FuzzTarget.h"

FUZZ_TARGET(tracklist, bytes) {
    static FuzzFolder folder;
    folder.NextInput("in.trk", bytes);
    TrackList list, again;
    std::string error;
    if (!LoadTrackList("in.trk", list, error)) {
        Require(!error.empty(), "a refusal has a reason");
        return;
    }
    Require(SaveTrackList("first.trk", list, error), "what was read can be written");
    Require(LoadTrackList("first.trk", again, error), "and read");
    Require(SaveTrackList("second.trk", again, error), "and written");
    Require(ReadBytes("first.trk") == ReadBytes("second.trk"), "to the same bytes");
}
