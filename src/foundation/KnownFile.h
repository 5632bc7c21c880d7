// A file as this program has read or written it last: it is not replaced unasked once another program has changed it.
#pragma once

#include <string>
#include <string_view>

#include "foundation/WholeFile.h"

class KnownFile {
public:
    void Know(std::string_view data_path);      // before it is read, or after it was written
    void KnowAgain(std::string_view data_path); // after it was written, in case it is the known one
    void Forget() { *this = {}; }
    // Asks when it is the known file and no longer as it was.
    bool MayReplace(std::string_view data_path) const;

private:
    std::string path;
    FileIdentity identity;
};
