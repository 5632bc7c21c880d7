#include "persistence/WriteError.h"

#include "foundation/Desktop.h"

void ShowWriteError(const std::string& reason) {
    if (!reason.empty())
        GetDesktop().Notice(reason);
    GetDesktop().MessageBox("There was an error writing the file, please\ncheck if you have enough disk space.",
                            "Error");
}
