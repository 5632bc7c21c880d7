// A movie; what was read is written and read again.
#include "fuzz/FuzzTarget.h"
#include "persistence/MovieFile.h"

FUZZ_TARGET(movie, bytes) {
    static FuzzFolder folder;
    folder.NextInput("in.mvi", bytes);
    std::vector<MoviePathRecord> paths, again;
    std::string error;
    if (ReadMovie("in.mvi", paths, error) != MovieReading::Read) {
        Require(!error.empty(), "a refusal has a reason");
        return;
    }
    for (const MoviePathRecord& path : paths)
        ComputeMovieTime(path);
    Require(WriteMovie("first.mvi", paths, error), "what was read can be written");
    Require(ReadMovie("first.mvi", again, error) == MovieReading::Read, "and read");
    Require(WriteMovie("second.mvi", again, error), "and written");
    Require(ReadBytes("first.mvi") == ReadBytes("second.mvi"), "to the same bytes");
}
