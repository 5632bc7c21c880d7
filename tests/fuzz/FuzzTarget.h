// A fuzz target: a function that reads bytes of anyone as one kind of file. In the fuzzing build each is a program of
// its own under libFuzzer; in every other build all are one program that replays the corpus.
#pragma once

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <string_view>

#include "foundation/Desktop.h"
#include "foundation/TempFolder.h"

#ifdef MARROWSTEAD_LIBFUZZER
#define FUZZ_TARGET(name, bytes)                                                                                       \
    static void Fuzz_##name(std::string_view bytes);                                                                   \
    extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {                                          \
        Fuzz_##name({reinterpret_cast<const char*>(data), size});                                                      \
        return 0;                                                                                                      \
    }                                                                                                                  \
    static void Fuzz_##name(std::string_view bytes)
#else
using FuzzFunction = void (*)(std::string_view bytes);
bool RegisterFuzzTarget(const char* name, FuzzFunction function);
#define FUZZ_TARGET(name, bytes)                                                                                       \
    static void Fuzz_##name(std::string_view bytes);                                                                   \
    static const bool registered_##name = RegisterFuzzTarget(#name, &Fuzz_##name);                                     \
    static void Fuzz_##name([[maybe_unused]] std::string_view bytes)
#endif

// What must hold whatever is read. Ends the program, as a fuzzer wants it.
inline void Require(bool holds, const char* what) {
    if (holds)
        return;
    std::fprintf(stderr, "does not hold: %s\n", what);
    std::abort();
}

// Answers no question, and forgets from input to input what it was told.
class FuzzDesktop : public HeadlessDesktop {
public:
    void Forget() {
        ForgetNotices();
        boxes.clear();
        notices.clear();
        SetDesktop(this);
    }
};

// The folder of a run of inputs, the current one while it lives.
class FuzzFolder {
public:
    FuzzFolder() : current(folder.Path()) {
        setenv("MARROWSTEAD_CONFIG", (folder / "config").c_str(), 1);
        std::filesystem::create_directories(folder.Path() / "config");
        std::filesystem::create_directories(folder.Path() / "Maps");
    }
    void NextInput(const std::string& name, std::string_view bytes) {
        desktop.Forget();
        WriteBytes(name, bytes);
    }

private:
    TempFolder folder;
    CurrentFolder current;
    FuzzDesktop desktop;
};
