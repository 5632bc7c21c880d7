#include <gtest/gtest.h>

#include <cstdio>

#include "editor/CompileLog.h"
#include "editor/ConsoleProgress.h"
#include "foundation/TempFolder.h"

// A stream whose text can be read back.
class Stream {
public:
    Stream() : file(std::tmpfile()) {}
    ~Stream() { std::fclose(file); }
    std::string Text() {
        std::string text;
        std::rewind(file);
        for (int c = 0; (c = std::fgetc(file)) != EOF;)
            text += static_cast<char>(c);
        return text;
    }
    std::FILE* file;
};

TEST(ConsoleProgress, TextGoesOutAsItGrowsAndTheBarNamesItsStage) {
    Stream out, bar;
    const volatile std::sig_atomic_t no_stop = 0;
    {
        ConsoleProgress progress(out.file, bar.file, true, &no_stop);
        progress.AddText("Raytracing Lightmaps... ");
        EXPECT_EQ(out.Text(), "Raytracing Lightmaps... ");
        progress.InitProgress(4);
        progress.IncrementProgress(1);
        progress.IncrementProgress(2);
        progress.AddText("\t-> done\r\n");
        EXPECT_EQ(progress.GetText(), "Raytracing Lightmaps... \t-> done\r\n") << "the log keeps the line ends";
    }
    EXPECT_EQ(out.Text(), "Raytracing Lightmaps... \t-> done\n");
    const std::string drawn = bar.Text();
    EXPECT_NE(drawn.find("Raytracing Lightmaps"), std::string::npos) << drawn;
    EXPECT_NE(drawn.find("  0%"), std::string::npos);
    EXPECT_NE(drawn.find(" 75%"), std::string::npos);
    EXPECT_EQ(drawn.substr(drawn.size() - 4), "\r\x1b[K") << "nothing of the bar stays";
}

TEST(ConsoleProgress, WithoutATerminalThereIsNoBar) {
    Stream out, bar;
    ConsoleProgress progress(out.file, bar.file, false, nullptr);
    progress.InitProgress(2);
    progress.IncrementProgress(1);
    EXPECT_EQ(bar.Text(), "");
    EXPECT_FALSE(progress.CompilationCancelled());
}

TEST(ConsoleProgress, TheSignalIsTheStopButton) {
    Stream out;
    volatile std::sig_atomic_t stop = 0;
    ConsoleProgress progress(out.file, out.file, false, &stop);
    EXPECT_FALSE(progress.CompilationCancelled());
    stop = 1;
    EXPECT_TRUE(progress.CompilationCancelled());
}

// As two programs over one data root: flock takes the descriptors of one process for those of two.
TEST(CompileLog, RunsAtOnceKeepTheTextsOfBoth) {
    TempFolder folder;
    CurrentFolder current(folder.Path());
    std::filesystem::create_directory("Marrowstead");
    WriteBytes("Marrowstead/Marrowstead2000.new",
               "of a killed run, longer than any header could be: " + std::string(500, '-'));
    {
        CompileLog first("first.msp", "abbey"), second("second.msp", "priory");
        const std::string held = ReadBytes("Marrowstead/Marrowstead2000.new");
        EXPECT_NE(held.find("##  Project: first.msp\r\n"), std::string::npos) << held;
        EXPECT_EQ(held.find("of a killed run"), std::string::npos);
        EXPECT_EQ(held.find("second"), std::string::npos);
        second.Finish("two");
        first.Finish("one");
    }
    EXPECT_EQ(EntriesIn("Marrowstead"), 1u);
    const std::string log = ReadBytes("Marrowstead/Marrowstead2000.log");
    const size_t one = log.find("one\r\n\r\n\r\n"), two = log.find("two\r\n\r\n\r\n");
    ASSERT_TRUE(one != std::string::npos && two != std::string::npos) << log;
    EXPECT_LT(one, two) << "the last to end stands on top";
    EXPECT_LT(log.find("first.msp"), one);
    EXPECT_TRUE(log.find("second.msp") > one && log.find("second.msp") < two);
}

TEST(CompileLog, NewestRunStandsOnTop) {
    TempFolder folder;
    CurrentFolder current(folder.Path());
    CompileLog("nowhere", "map").Finish("lost"); // the folder of the logs is missing: no failure
    std::filesystem::create_directory("Marrowstead");
    CompileLog("first.msp", "abbey").Finish("one");
    CompileLog("", "abbey").Finish("two");
    const std::string log = ReadBytes("Marrowstead/Marrowstead2000.log");
    EXPECT_FALSE(std::filesystem::exists("Marrowstead/Marrowstead2000.new"));
    const std::string rule(70, '#');
    EXPECT_EQ(log.find(rule + "\r\n##   Target: abbey\r\n##  ["), 0u) << log;
    const size_t second = log.find("two\r\n\r\n\r\n" + rule + "\r\n##  Project: first.msp\r\n##   Target: abbey\r\n");
    ASSERT_NE(second, std::string::npos) << log;
    EXPECT_NE(log.find("one\r\n\r\n\r\n", second), std::string::npos);
}
