#include "Support/LocalFiles.h"

#include <gtest/gtest.h>

#include "Tests/Support/TemporaryHome.h"

namespace fs = std::filesystem;

TEST(NewestFile, OnlyVisibleRegularFilesWithTheSuffixCountAndClosedDirectoriesAreSkipped) {
    TemporaryHome home;
    const auto logs = home.at(".tool/logs/");
    const auto newest = [] { return LocalFiles::newestFile("~/.tool/logs", ".jsonl"); };
    double time = 1000;
    for (const char* path :
         {"b.jsonl", "a.jsonl", "sub/a.jsonl", "d.jsonl/a.jsonl", "\xFF/\xFE.jsonl"})  // ever newer
        EXPECT_EQ(newest(),
                  (home.write(".tool/logs/" + std::string(path), "", time += 0.25), logs + path));
    for (const char* path : {".x.jsonl", "sub/.h/s/x.jsonl", "x.JSONL", "x.jsonl~"})
        home.write(".tool/logs/" + std::string(path), "");
    fs::create_directory_symlink(logs, logs + "loop");
    fs::create_symlink(home.write("x.jsonl", ""), logs + "link.jsonl");
    ASSERT_EQ(mkfifo((logs + "fifo.jsonl").c_str(), 0600), 0);
    for (const char* closed : {"sub", "d.jsonl", "\xFF"}) {
        chmod((logs + closed).c_str(), 0);
        EXPECT_EQ(seteuid(getuid() ? getuid() : 65534), 0);  // permissions don't bind root
        EXPECT_EQ(newest(), logs + (*closed == '\xFF' ? "d.jsonl/a.jsonl" : "\xFF/\xFE.jsonl"));
        EXPECT_EQ(seteuid(getuid()), 0);
        chmod((logs + closed).c_str(), 0755);
    }
}

TEST(ForEachFile, GoesOnPastWhatVanishes) {
    TemporaryHome home;
    for (const char* name : {"1", "2", "3", "4", "5"})
        home.write(name, "");
    const std::vector<fs::path> inWalk(fs::directory_iterator(home.path()), {});
    int visits = 0;
    LocalFiles::forEachFile(
        home.path(), LocalFiles::Hidden::skip, [](auto) { return true; },
        [&](auto&&...) {
            for (const int vanishing : {1, 2, 3})
                fs::remove(inWalk[vanishing]);
            visits++;
        });
    EXPECT_EQ(visits, 2) << "the first and the last";
}

TEST(Tail, IsValidTextOfARegularFileFromTheCutOnAndAtOnce) {
    using namespace std::string_literals;
    TemporaryHome home;
    for (const auto& text : {""s, "1234"s, "\xFF\xE2\x80\x94x"s, "a\0b\r\n"s})
        EXPECT_EQ(LocalFiles::tail(home.write("log", text), 4),
                  text.substr(text.size() > 4 ? text.size() - 4 : 0));
    EXPECT_FALSE(LocalFiles::tail(home.write("log", "\xE2\x80\x94xx"), 4));
    for (int i = 0; i < 18; i++)
        EXPECT_FALSE(LocalFiles::text(
            home.write("log", std::string(i, 'a') + "\xFF" + std::string(18, 'a'))));
    fs::resize_file(home.write("log", ""), (64 << 20) + 1);
    EXPECT_FALSE(LocalFiles::text(home.at("log")));
    EXPECT_EQ(LocalFiles::tail(home.at("log"), 2), "\0\0"s);
    EXPECT_EQ(home.shell("mkfifo fifo; ln -s loop loop; ln -s /dev/zero zero"), 0);
    alarm(5);  // a FIFO must not be waited for
    for (const char* name : {"fifo", "loop", ".", "none", "zero"})
        EXPECT_FALSE(LocalFiles::tail(home.at(name), 9) || LocalFiles::text(home.at(name))) << name;
    alarm(0);
}
