// fslib: writes and reads packed ".fs" libraries.
#include <algorithm>
#include <cstdio>
#include <filesystem>
#include <functional>
#include <limits>
#include <system_error>

#include "files/AtomicFile.h"
#include "files/FileLibrary.h"
#include "files/FileObject.h"
#include "files/LibraryWriter.h"
#include "foundation/Options.h"
#include "foundation/Paths.h"

namespace fs = std::filesystem;

namespace {

enum ExitStatus { EXIT_OK = 0, EXIT_BAD_INPUT = 1, EXIT_NOT_WRITABLE = 4 };

constexpr uint32_t READ_STEP = 1 << 20;
constexpr uint64_t LARGEST_LIBRARY = std::numeric_limits<int32_t>::max();

int Refuse(const std::string& sentence, ExitStatus status = EXIT_BAD_INPUT) {
    std::fprintf(stderr, "fslib: %s\n", sentence.c_str());
    return status;
}

std::string Quoted(const std::string& text) { return "\"" + text + "\""; }

// All regular files below the folder, in byte order of their paths.
bool ListFiles(const fs::path& folder, std::vector<fs::path>& files, std::string& reason) {
    std::error_code error;
    fs::recursive_directory_iterator entry(folder, error);
    for (; !error && entry != fs::recursive_directory_iterator(); entry.increment(error)) {
        std::error_code no_file; // a link to nowhere is passed over
        if (entry->is_regular_file(no_file))
            files.push_back(entry->path());
    }
    std::sort(files.begin(), files.end());
    reason = error.message();
    return !error;
}

int Create(const std::string& output, const std::string& folder, const std::string& prefix, bool store) {
    std::vector<fs::path> files;
    std::string reason;
    if (!ListFiles(RealPath(folder), files, reason))
        return Refuse("cannot read the folder " + Quoted(folder) + ": " + reason);
    LibraryWriter writer;
    uint64_t total = 0;
    for (const fs::path& path : files) {
        std::error_code error;
        if (fs::equivalent(path, RealPath(output), error))
            continue; // an earlier result, which is about to be replaced
        FileObject file(path.string(), FO_Open);
        std::vector<uint8_t> data;
        if (!file.IsValid() || !file.ReadAll(data))
            return Refuse("cannot read " + Quoted(path.string()));
        total += data.size();
        if (total > LARGEST_LIBRARY)
            return Refuse("the files of " + Quoted(folder) + " are more than the 2 GiB that a library holds");
        const std::string name =
            (prefix.empty() ? "" : prefix + "\\") + path.lexically_relative(RealPath(folder)).string();
        if (!writer.Add(name, std::move(data)))
            return Refuse(Quoted(path.string()) + " has the same path in a library as another file");
    }
    if (!writer.Write(output, store, reason))
        return Refuse(reason, EXIT_NOT_WRITABLE);
    std::printf("%s: %zu files\n", output.c_str(), writer.GetCount());
    return EXIT_OK;
}

bool OpenLibrary(const std::string& path, FileLibrary& library) {
    const FileObject file(path, FO_Open);
    if (!file.IsValid()) {
        Refuse("cannot open " + Quoted(path) + ": " + file.GetError());
        return false;
    }
    const FileLibraryResult result = library.AddFileLibrary(path, 0);
    if (result == FL_WRONG_VERSION)
        Refuse(Quoted(path) + " is a library of an unknown version");
    else if (result != FL_OK)
        Refuse(Quoted(path) + " is not a library, or its tables are damaged");
    return result == FL_OK;
}

std::string EntryPath(const FLMemDirStruct& directory, const FLMemFileStruct& file) {
    return directory.name.empty() ? file.name : directory.name + "\\" + file.name;
}

// Calls visit(path, entry) for each entry, sorted by folder, until it returns another status than EXIT_OK.
int ForEachEntry(const FileLibrary& library,
                 const std::function<int(const std::string& path, const FLMemFileStruct& file)>& visit) {
    for (const FLMemDirStruct& directory : library.GetDirectories())
        for (const FLMemFileStruct& file : directory.memFiles)
            if (const int status = visit(EntryPath(directory, file), file); status != EXIT_OK)
                return status;
    return EXIT_OK;
}

// Hands the entry's bytes over piece by piece. False when it cannot be read to its end, its lengths are at odds, or
// take refuses a piece.
bool ReadEntry(FileLibrary& library, const std::string& path, const FLMemFileStruct& entry,
               const std::function<bool(const uint8_t* bytes, uint32_t count)>& take) {
    const bool lengths_agree = entry.flags & FLF_PACKED || entry.fileLength == entry.unpackedLength;
    const uint32_t handle = lengths_agree ? library.FileOpen(path, 0) : FL_BAD_HANDLE;
    if (handle == FL_BAD_HANDLE)
        return false;
    std::vector<uint8_t> bytes(READ_STEP);
    uint32_t count = 0;
    bool good = true;
    while (good && (count = library.FileRead(handle, bytes.data(), static_cast<uint32_t>(bytes.size()))) != 0)
        good = count != FL_BAD_HANDLE && take(bytes.data(), count);
    library.FileClose(handle);
    return good;
}

int BadEntry(const std::string& path, const std::string& library_path) {
    return Refuse("the entry " + Quoted(path) + " of " + Quoted(library_path) + " is damaged");
}

int List(const std::string& path) {
    FileLibrary library;
    if (!OpenLibrary(path, library))
        return EXIT_BAD_INPUT;
    std::printf("%10s %10s %-6s %s\n", "size", "stored", "flags", "path");
    return ForEachEntry(library, [](const std::string& entry_path, const FLMemFileStruct& file) {
        std::printf("%10u %10u %-6s %s\n", file.unpackedLength, file.fileLength,
                    file.flags & FLF_PACKED ? (file.flags & FLF_ONLY_IN_LIBRARY ? "packed,only" : "packed")
                                            : (file.flags & FLF_ONLY_IN_LIBRARY ? "only" : "-"),
                    entry_path.c_str());
        return EXIT_OK;
    });
}

int Test(const std::string& path) {
    FileLibrary library;
    if (!OpenLibrary(path, library))
        return EXIT_BAD_INPUT;
    size_t count = 0;
    const int status = ForEachEntry(library, [&](const std::string& entry_path, const FLMemFileStruct& entry) {
        ++count;
        const bool good = ReadEntry(library, entry_path, entry, [](const uint8_t*, uint32_t) { return true; });
        return good ? EXIT_OK : BadEntry(entry_path, path);
    });
    if (status == EXIT_OK)
        std::printf("%s: %zu files, all good\n", path.c_str(), count);
    return status;
}

// The entry's path below a folder; empty when it would lead out of it.
fs::path SafePath(const std::string& entry_path) {
    fs::path result;
    for (size_t start = 0; start <= entry_path.size();) {
        const size_t end = std::min(entry_path.find_first_of("\\/", start), entry_path.size());
        const std::string part = entry_path.substr(start, end - start);
        if (part.empty() || part == "." || part == "..")
            return {};
        result /= part;
        start = end + 1;
    }
    return result;
}

// A link that stands in the folder must not lead the writing out of it either.
bool IsBelow(const fs::path& folder, const fs::path& path) {
    std::error_code error;
    const fs::path real_folder = fs::weakly_canonical(folder, error);
    const fs::path real = error ? fs::path() : fs::weakly_canonical(path, error);
    const auto [end_of_folder, rest] = std::mismatch(real_folder.begin(), real_folder.end(), real.begin(), real.end());
    return !error && end_of_folder == real_folder.end() && rest != real.end();
}

int ExtractEntry(FileLibrary& library, const std::string& library_path, const std::string& entry_path,
                 const FLMemFileStruct& entry, const fs::path& folder) {
    const fs::path target = RealPath((folder / SafePath(entry_path)).string());
    if (!IsBelow(folder, target))
        return Refuse("the entry " + Quoted(entry_path) + " would be written outside " + Quoted(folder.string()));
    if (!MakeFolders(target.parent_path().string()))
        return Refuse("cannot create the folder " + Quoted(target.parent_path().string()), EXIT_NOT_WRITABLE);
    AtomicFile file(target.string(), false);
    const bool good = ReadEntry(library, entry_path, entry,
                                [&](const uint8_t* bytes, uint32_t count) { return file.Write(bytes, count); });
    if (file.GetError().empty() && !good)
        return BadEntry(entry_path, library_path);
    if (!file.Commit())
        return Refuse("cannot write " + Quoted(target.string()) + ": " + file.GetError(), EXIT_NOT_WRITABLE);
    return EXIT_OK;
}

int Extract(const std::string& path, const std::string& folder) {
    FileLibrary library;
    if (!OpenLibrary(path, library))
        return EXIT_BAD_INPUT;
    size_t count = 0;
    const int unsafe = ForEachEntry(library, [&](const std::string& entry_path, const FLMemFileStruct&) -> int {
        ++count;
        return SafePath(entry_path).empty() ? Refuse("the entry " + Quoted(entry_path) + " of " + Quoted(path) +
                                                     " has no safe path, so nothing was extracted")
                                            : EXIT_OK;
    });
    if (unsafe != EXIT_OK)
        return unsafe;
    const fs::path target = RealPath(folder);
    if (!MakeFolders(target.string()))
        return Refuse("cannot create the folder " + Quoted(folder), EXIT_NOT_WRITABLE);
    const int status = ForEachEntry(library, [&](const std::string& entry_path, const FLMemFileStruct& entry) {
        return ExtractEntry(library, path, entry_path, entry, target);
    });
    if (status == EXIT_OK)
        std::printf("%s: %zu files\n", target.c_str(), count);
    return status;
}

} // namespace

static int Run(int argc, char** argv) {
    CLI::App app{"Writes and reads packed .fs libraries."};
    app.name("fslib");
    app.require_subcommand(1);
    std::string library, folder, prefix;
    bool store = false;
    int status = EXIT_OK;

    CLI::App* create = app.add_subcommand("create", "Put all files of a folder into a new library.");
    create->add_option("library", library, "The .fs file to write")->required();
    create->add_option("folder", folder, "The folder whose files it takes")->required();
    create->add_flag("--store", store, "Do not pack");
    create->add_option("--prefix", prefix, "A folder that leads all paths in the library");
    create->callback([&] { status = Create(library, folder, prefix, store); });

    CLI::App* list = app.add_subcommand("list", "Tell what a library holds.");
    list->add_option("library", library, "The .fs file")->required();
    list->callback([&] { status = List(library); });

    CLI::App* extract = app.add_subcommand("extract", "Write all entries of a library into a folder.");
    extract->add_option("library", library, "The .fs file")->required();
    extract->add_option("folder", folder, "The folder to write to; it is made if it is missing")->required();
    extract->callback([&] { status = Extract(library, folder); });

    CLI::App* test = app.add_subcommand("test", "Read every entry to its end.");
    test->add_option("library", library, "The .fs file")->required();
    test->callback([&] { status = Test(library); });

    if (const std::optional<int> ended = ParseOptions(app, argc, argv, EXIT_BAD_INPUT))
        return *ended;
    return status;
}

int main(int argc, char** argv) { return RunProgram(Run, argc, argv); }
