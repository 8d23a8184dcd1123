#include "Support/LocalFiles.h"

#include <gtest/gtest.h>

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

TEST(ForEachFile, GoesOnPastWhatIsClosedOrVanishes) {
    TemporaryHome home;
    for (const char* path : {"a/1", "a/2", "a/3", "a/4", "a/5", "b/1", "c/1"})
        home.write(path, "");
    const auto walk = [](const std::string& below, const std::function<void()>& atFirst) {
        int visits = 0;
        LocalFiles::forEachFile(
            below, LocalFiles::Hidden::skip, [](auto) { return true; },
            [&](auto&&...) {
                if (visits++ == 0) atFirst();
            });
        return visits;
    };
    for (const char* closed : {"a", "b", "c"}) {
        chmod(home.at(closed).c_str(), 0);
        EXPECT_EQ(seteuid(getuid() ? getuid() : 65534), 0);  // permissions don't bind root
        EXPECT_EQ(walk(home.path(), [] {}), closed[0] == 'a' ? 2 : 6) << closed;
        EXPECT_EQ(seteuid(getuid()), 0);
        chmod(home.at(closed).c_str(), 0755);
    }
    const std::vector<fs::path> inWalk(fs::directory_iterator(home.at("a")), {});
    const auto thin = [&] {
        std::for_each(inWalk.begin() + 1, inWalk.end() - 1, [](auto& path) { fs::remove(path); });
    };
    EXPECT_EQ(walk(home.at("a"), thin), 2) << "the first and the last";
}

TEST(Tail, IsValidTextOfARegularFileFromTheCutOn) {
    using namespace std::string_literals;
    TemporaryHome home;
    for (const auto& text : {""s, "1234"s, "x1234"s, "\xFF\xE2\x80\x94x"s, "a\0b\r\n"s})
        EXPECT_EQ(LocalFiles::tail(home.write("log", text), 4),
                  text.substr(text.size() > 4 ? text.size() - 4 : 0));
    for (const auto& text : {"\xE2\x80\x94xx"s, "xxx\xE2\x80"s, "\xC0\x80"s, "\xED\xA0\x80"s})
        EXPECT_EQ(LocalFiles::tail(home.write("log", text), 4), std::nullopt) << text;
    for (std::size_t i = 0; i < 18; i++) {
        const auto path = home.write("log", std::string(40, 'a').replace(i, 1, "\xFF"));
        EXPECT_FALSE(LocalFiles::text(path)) << i;
    }
}

TEST(Tail, OfAnythingButARegularFileIsAbsentAtOnce) {
    TemporaryHome home;
    const auto path = home.write("log", "");
    for (const std::size_t size : {64 << 20, (64 << 20) + 1}) {
        fs::resize_file(path, size);
        EXPECT_EQ(LocalFiles::text(path).has_value(), size == 64 << 20);
        EXPECT_EQ(LocalFiles::tail(path, 2), std::string(2, '\0'));
    }
    EXPECT_EQ(home.shell("mkfifo fifo; ln -s loop loop; ln -s /dev/zero zero"), 0);
    const int descriptor = dup(0);
    close(descriptor);
    alarm(5);  // a FIFO must not be waited for
    for (const char* name : {"fifo", "loop", ".", "none", "zero"})
        EXPECT_FALSE(LocalFiles::tail(home.at(name), 9) || LocalFiles::text(home.at(name))) << name;
    alarm(0);
    EXPECT_EQ(dup(0), descriptor) << "a file is left open";
}
