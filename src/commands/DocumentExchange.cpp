// What comes from other programs and goes to them: the level as VRML, and meshes from modelling tools.
#include <filesystem>

#include "commands/Document.h"
#include "foundation/Paths.h"
#include "foundation/Strings.h"
#include "persistence/MeshFile.h"
#include "persistence/VrmlExport.h"

namespace {

constexpr const char* BRUSH_FOLDER = "Marrowstead\\Brushes";
constexpr const char* IMPORT_TITLE = "Import";

// A name without its ending, with another one.
std::string WithEnding(const std::string& path, const char* ending) {
    const std::string file = FilePart(path);
    const size_t dot = file.rfind('.');
    return path.substr(0, path.size() - file.size()) + file.substr(0, dot) + ending;
}

bool LiesInBrushes(const std::string& path) {
    std::error_code error;
    const std::filesystem::path root = std::filesystem::weakly_canonical(RealPath(BRUSH_FOLDER), error);
    std::filesystem::path folder = std::filesystem::weakly_canonical(RealPath(path), error).parent_path();
    for (; folder.has_relative_path(); folder = folder.parent_path())
        if (folder == root)
            return true;
    return false;
}

} // namespace

void CMarrowstead2Doc::OnFileExport() {
    const std::optional<std::string> path =
        GetDesktop().AskFile({true, "Export", "VRML(*.wrl)|*.wrl||", "Marrowstead\\Projects\\", ".wrl", ""});
    if (!path)
        return;
    GetDesktop().SetCursor(CursorRole::Wait);
    std::string error;
    const bool written = ExportVrml(*path, *interface.world, error);
    interface.ChangeCursor();
    if (!written)
        GetDesktop().MessageBox(error, "Export");
}

void CMarrowstead2Doc::OnFileImport() {
    const std::optional<std::string> path = GetDesktop().AskFile(
        {false, IMPORT_TITLE, "Wavefront OBJ(*.obj)|*.obj||", std::string(BRUSH_FOLDER) + "\\", ".obj", ""});
    if (!path)
        return;
    const std::string mesh = WithEnding(*path, ".msh");
    std::vector<CustomMeshPart> parts;
    std::string error;
    GetDesktop().SetCursor(CursorRole::Wait);
    const bool imported = ReadForeignMesh(*path, parts, error) && WriteMesh(mesh, parts, error);
    interface.ChangeCursor();
    if (!imported)
        GetDesktop().MessageBox(error, IMPORT_TITLE);
    else if (!LiesInBrushes(mesh))
        GetDesktop().MessageBox(
            Format("The mesh was written to \"%s\"; put it into a folder of %s to use it as a brush.", mesh.c_str(),
                   BRUSH_FOLDER),
            IMPORT_TITLE);
}
