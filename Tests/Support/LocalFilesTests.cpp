#include "Support/LocalFiles.h"

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include "Platform/RegularFile.h"
#include "Tests/Support/TemporaryHome.h"

namespace fs = std::filesystem;

TEST(NewestFile, OnlyVisibleRegularFilesWithTheSuffixCount) {
    TemporaryHome home;
    const auto logs = home.at(".tool/logs/");
    double time = 1000;
    for (const char* path :
         {"b.jsonl", "a.jsonl", "sub/a.jsonl", "d.jsonl/a.jsonl", "\xFF/\xFE.jsonl"})  // ever newer
        EXPECT_EQ(LocalFiles::newestFile("~/.tool/logs", ".jsonl"),
                  (home.write(".tool/logs/" + std::string(path), "", time += 0.25), logs + path));
    for (const char* path : {".x.jsonl", "sub/.h/s/x.jsonl", "x.JSONL", "x.jsonl~"})
        home.write(".tool/logs/" + std::string(path), "");
    fs::create_directory_symlink(logs, logs + "loop");
    fs::create_symlink(home.write("x.jsonl", ""), logs + "link.jsonl");
    ASSERT_EQ(mkfifo((logs + "fifo.jsonl").c_str(), 0600), 0);
    EXPECT_EQ(LocalFiles::newestFile("~/.tool/logs", ".jsonl"), logs + "\xFF/\xFE.jsonl");
}

TEST(NewestFile, GoesTwoThousandFoldersDeepAndOverUnreadableOnes) {
    TemporaryHome home;
    chmod(home.path().c_str(), 0755);
    chmod(fs::path(home.write("closed/a.jsonl", "")).parent_path().c_str(), 0);
    std::string path = home.path();
    for (int depth = 0; depth < 2000; ++depth)
        ASSERT_EQ(mkdir((path += "/d").c_str(), 0755), 0);
    fs::create_hard_link(home.write("x", ""), path + "/a.jsonl");
    ASSERT_EQ(seteuid(getuid() == 0 ? 65534 : getuid()), 0);  // permissions don't bind root
    EXPECT_EQ(LocalFiles::newestFile("~", ".jsonl"), path + "/a.jsonl");
    ASSERT_EQ(seteuid(getuid()), 0);
    fs::remove(path + "/a.jsonl");
    for (; path != home.path(); path.resize(path.size() - 2))
        fs::remove(path);
}

TEST(ForEachFile, GoesOnWhenFoldersVanish) {
    TemporaryHome home;
    for (const char* path : {"a/1.log", "a/a/1.log", "b/1.log", "b/b/1.log"})
        home.write(path, "");
    int visits = 0;
    const auto visit = [&](auto&, auto*, Instant) {
        visits += fs::remove_all(home.at("a")) + fs::remove_all(home.at("b")) > 0;
    };
    LocalFiles::forEachFile(
        home.path(), LocalFiles::Hidden::skip, [](auto) { return true; }, visit);
    EXPECT_EQ(visits, 1);
}

TEST(Tail, IsValidTextOfARegularFileFromTheCutOn) {
    using namespace std::string_literals;
    TemporaryHome home;
    for (const auto& text : {""s, "1234"s, "x1234"s, "\xFF\xE2\x80\x94x"s, "a\0b\r\n"s})
        EXPECT_EQ(LocalFiles::tail(home.write("log", text), 4),
                  text.substr(text.size() > 4 ? text.size() - 4 : 0));
    for (const char* text : {"\xE2\x80\x94xx", "xxx\xE2\x80", "\xC0\x80", "\xED\xA0\x80", "\xF4\x90\x80\x80"})
        EXPECT_EQ(LocalFiles::tail(home.write("log", text), 4), std::nullopt) << text;
    fs::resize_file(home.at("log"), 1L << 31);
    EXPECT_EQ(LocalFiles::tail(home.at("log"), 2), "\0\0"s);
    EXPECT_EQ(RegularFile::contents(home.at("log")), std::nullopt) << "2 GiB are no settings";

    ASSERT_EQ(mkfifo(home.at("fifo").c_str(), 0666), 0);
    fs::create_symlink(home.at("loop"), home.at("loop"));
    const int descriptor = dup(0);
    close(descriptor);
    alarm(5);  // a FIFO must not be waited for
    for (const auto& path : {home.at("fifo"), home.at("loop"), home.path(), home.at("none"), "/dev/zero"s})
        EXPECT_FALSE(LocalFiles::tail(path, 100) || RegularFile::contents(path)) << path;
    EXPECT_EQ(dup(0), descriptor) << "a file is left open";
}
