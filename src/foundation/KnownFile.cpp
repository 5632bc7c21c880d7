#include "foundation/KnownFile.h"

#include "foundation/Desktop.h"
#include "foundation/Paths.h"
#include "foundation/Strings.h"

void KnownFile::Know(std::string_view data_path) {
    path = data_path;
    identity = IdentityOf(RealPath(data_path));
}

void KnownFile::KnowAgain(std::string_view data_path) {
    if (data_path == path)
        Know(data_path);
}

bool KnownFile::MayReplace(std::string_view data_path) const {
    const FileIdentity now = IdentityOf(RealPath(data_path));
    return data_path != path || !now.Exists() || now == identity ||
           GetDesktop().MessageBox("Another program has changed \"" + FilePart(data_path) +
                                       "\" since it was opened or saved.\n\nDo you want to write over it?",
                                   "Marrowstead 2000", MessageButtons::YesNo) == MessageAnswer::Yes;
}
