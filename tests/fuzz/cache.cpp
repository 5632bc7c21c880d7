// The cache of materials; what it holds is asked for, added to, written and read again.
#include "definitions/MaterialCache.h"
#include "fuzz/FuzzTarget.h"

namespace {

// The script that seeds know is as old as they say.
void WriteScript() {
    constexpr std::chrono::seconds AGE{1000000000}; // since 1970
    const std::string path = "Scripts/Materials/wall/brick.mtl";
    WriteBytes(path, "#Basic Material Properties\n");
    std::filesystem::last_write_time(
        path, std::filesystem::file_time_type(std::chrono::file_clock::from_sys(std::chrono::sys_seconds(AGE))));
}

} // namespace

FUZZ_TARGET(cache, bytes) {
    static FuzzFolder folder;
    static const bool written = (WriteScript(), true);
    Require(written, "the script is there");
    folder.NextInput("in.cache", bytes);
    MaterialCache cache("in.cache");
    MaterialProperties known, added{"wall", "old_brick", true, false, true, false, 0.5f, {}};
    cache.GetFileData("wall", "brick", known);
    cache.AddFileData("wall", "brick", added);
    Require(cache.Save("first.cache"), "a cache can be written");
    MaterialCache again("first.cache");
    Require(again.GetFileData("wall", "brick", known) && known.texture_name == added.texture_name &&
                known.transparent && !known.light_illumination && known.ambient_intensity == added.ambient_intensity,
            "what was added is there");
    again.AddFileData("wall", "stone", added);
    again.AddFileData("wall", "brick", added);
    Require(again.Save("second.cache"), "and written");
    const std::string second = ReadBytes("second.cache");
    Require(MaterialCache("second.cache").Save("third.cache") && ReadBytes("second.cache") == second,
            "what was written is read without a loss");
}
