// The length of what a key's script starts: a movie, or the speech of an actor.
#include <algorithm>
#include <cctype>

#include "definitions/Numbers.h"
#include "editor/Interface.h"
#include "files/FileObject.h"
#include "foundation/Strings.h"
#include "pages/TrackDlg.h"
#include "persistence/MovieFile.h"

namespace {

constexpr const char *START_MOVIE = "startmovie", *ACTOR_TALK = "actortalk"; // lower case

bool IsSeparator(char c) { return std::isspace(static_cast<unsigned char>(c)) || c == ',' || c == ';'; }

// The next argument from `at` on, which moves behind it: between quotes of one kind, else up to a blank.
std::string NextArgument(std::string_view text, size_t& at) {
    while (at < text.size() && (IsSeparator(text[at]) || text[at] == '('))
        ++at;
    if (at < text.size() && (text[at] == '"' || text[at] == '\'')) {
        const char quote = text[at++];
        const size_t end = std::min(text.find(quote, at), text.size());
        const std::string_view argument = text.substr(at, end - at);
        at = std::min(end + 1, text.size());
        return std::string(argument);
    }
    const size_t start = at;
    while (at < text.size() && !IsSeparator(text[at]) && text[at] != ')')
        ++at;
    return std::string(text.substr(start, at - start));
}

// Seconds, or nothing after a notice.
std::optional<float> LengthOfMovie(const std::string& name) {
    const std::string file = "Anim\\" + name + ".mvi";
    std::vector<MoviePathRecord> paths;
    std::string error;
    if (ReadMovie(file, paths, error) == MovieReading::Read && paths.empty())
        error = "\"" + file + "\" has no path";
    if (error.empty())
        return ComputeMovieTime(paths.front());
    GetDesktop().Notice(error);
    return std::nullopt;
}

// The last line of the text beside the sound tells its length.
std::optional<float> LengthOfSpeech(const std::string& sound) {
    constexpr size_t ENDING = 3;
    const std::string file = sound.substr(0, sound.size() - std::min(ENDING, sound.size())) + "txt";
    FileObject text(file, FO_Open);
    if (!text.IsValid()) {
        GetDesktop().Notice("cannot open \"" + file + "\": " + text.GetError());
        return std::nullopt;
    }
    std::string line, last;
    while (text.ReadLine(line, RLTF_TruncateAll) != -1)
        if (!line.empty())
            last = line;
    const float seconds = ParseFloat(last);
    if (seconds >= 0 && last.find_first_of("0123456789") != std::string::npos)
        return seconds;
    GetDesktop().Notice("\"" + file + "\": its last line is no time");
    return std::nullopt;
}

} // namespace

std::optional<float> CTrackDlg::LengthOf(const std::string& script) const {
    const std::string lower = ToLower(script);
    const auto behind = [&lower](std::string_view word) {
        const size_t found = lower.find(word);
        return found == std::string::npos ? found : found + word.size();
    };
    if (size_t at = behind(START_MOVIE); at != std::string::npos)
        return LengthOfMovie(NextArgument(script, at));
    if (size_t at = behind(ACTOR_TALK); at != std::string::npos) {
        NextArgument(script, at); // the actor
        return LengthOfSpeech(NextArgument(script, at));
    }
    return std::nullopt;
}

void CTrackDlg::ApplyKey(const CKeyPointProperties& properties) {
    STrackLine* const line = track.SelectedLine();
    if (!line || track.m_mouse_key < 0 || static_cast<size_t>(track.m_mouse_key) >= line->m_keyPoints.size())
        return;
    std::vector<SKeyPoint>& keys = line->m_keyPoints;
    const auto k = static_cast<size_t>(track.m_mouse_key);
    keys[k].m_color = properties.key.m_color;
    keys[k].m_comment = properties.key.m_comment;
    keys[k].m_script = properties.key.m_script;
    const std::optional<float> length = properties.sync_required ? LengthOf(keys[k].m_script) : std::nullopt;
    if (!length)
        return;
    SKeyPoint next;
    if (k + 1 < keys.size()) {
        next = std::move(keys[k + 1]);
        keys.erase(keys.begin() + static_cast<std::ptrdiff_t>(k + 1));
    }
    next.m_time = keys[k].m_time + *length;
    line->AddKey(std::move(next)); // behind those that it has overtaken
}
