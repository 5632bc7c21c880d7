// Work is not lost in a crash: while the level has changes that are not saved, a copy of it is kept beside the
// settings, and the next start offers it. A run that ends in order takes its copy away.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "editor/Interface.h"

class CMarrowstead2Doc;

// The copy of a run that did not end in order.
struct RecoveredLevel {
    std::string copy, movie, note, lock; // files; movie: of the paths, which no project holds, where there are some
    bool has_name = false;
    std::string project_path, project_name; // of the project it is a copy of
    std::string movie_name;
    bool movie_editing = false;
};

class RecoveryFile {
public:
    explicit RecoveryFile(CInterface& editor_interface);
    RecoveryFile(const RecoveryFile&) = delete;
    RecoveryFile& operator=(const RecoveryFile&) = delete;
    ~RecoveryFile();

    // Called often. now: milliseconds. Writes the copy when the level has changed and the interval of the settings is
    // over; takes it away when everything is saved.
    void Tick(uint32_t now);
    // The copy now, if anything is not saved. A failure is told once, until it works again.
    bool Write();

    // The copies of runs that did not end in order.
    static std::vector<RecoveredLevel> FindLeftOver();
    // Asks for each of them whether it is to be opened. Opened ones have unsaved changes; the others stay until No.
    void Offer(CMarrowstead2Doc& document);

private:
    void Remove();
    bool WriteNote(std::string& error) const;
    bool WriteMovieCopy(std::string& error) const;
    void OpenMovie(const RecoveredLevel& level);

    CInterface& interface;
    std::string copy, movie, note, lock;
    int lock_descriptor = -1;
    uint32_t written_changes, first_change_tick = 0;
    bool has_copy = false, is_waiting = false, failure_told = false;
};
