#include "pages/FileCopy.h"

#include <vector>

#include "files/AtomicFile.h"
#include "files/FileObject.h"
#include "foundation/Paths.h"
#include "foundation/Strings.h"

namespace {

bool WriteWhole(std::string_view target, const void* data, size_t length, std::string& error) {
    MakeFolders(DirectoryPart(target));
    AtomicFile file(target);
    if (file.IsOpen() && file.Write(data, length) && file.Commit())
        return true;
    error = std::string(target) + " cannot be written: " + file.GetError();
    return false;
}

} // namespace

bool CopyFileOut(std::string_view source, std::string_view target, std::string& error) {
    FileObject file(source, FO_Open);
    std::vector<uint8_t> data;
    if (!file.IsValid() || !file.ReadAll(data)) {
        error = std::string(source) + " cannot be read" + (file.GetError().empty() ? "" : ": " + file.GetError());
        return false;
    }
    return WriteWhole(target, data.data(), data.size(), error);
}

bool WriteTextFile(std::string_view target, std::string_view text, std::string& error) {
    return WriteWhole(target, text.data(), text.size(), error);
}
