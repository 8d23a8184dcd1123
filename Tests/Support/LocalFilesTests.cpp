#include "Support/LocalFiles.h"

#include <gtest/gtest.h>

#include "Platform/RegularFile.h"
#include "Tests/Support/TemporaryHome.h"

namespace fs = std::filesystem;

namespace {

/// The entries of a directory in the order of a walk.
std::vector<fs::path> entries(const std::string& directory) {
    std::vector<fs::path> all;
    for (const auto& entry : fs::directory_iterator(directory))
        all.push_back(entry.path());
    return all;
}

/// How many files a walk visits when something happens at the first one, of which it is told the
/// directory.
int countFiles(const std::function<void(const std::string&)>& atFirst) {
    int visits = 0;
    LocalFiles::forEachFile(
        TemporaryHome::path(), LocalFiles::Hidden::skip, [](auto) { return true; },
        [&](const std::string& directory, auto*, Instant) {
            if (visits++ == 0) atFirst(directory);
        });
    return visits;
}

}  // namespace

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
    for (int i = 0; i < 25; i++)  // five directories of five logs each
        home.write(std::to_string(i / 5) + "/" + std::to_string(i % 5) + ".log", "", 1000);
    EXPECT_EQ(LocalFiles::newestFile("~/3", ".log"), entries(home.at("3")).front())
        << "the first of equals";

    const auto directories = entries(home.path());
    const auto setMode = [&](mode_t mode) {
        for (const int i : {0, 2, 4})
            chmod(directories[i].c_str(), mode);
        return seteuid(mode || getuid() ? getuid() : 65534);  // permissions don't bind root
    };
    ASSERT_EQ(setMode(0), 0);
    EXPECT_EQ(countFiles([](auto&) {}), 10);
    ASSERT_EQ(seteuid(getuid()) + setMode(0700), 0);

    const auto thin = [](const std::string& directory) {
        const auto all = entries(directory);
        std::for_each(all.begin() + 1, all.end() - 1, [](auto& path) { fs::remove_all(path); });
    };
    const int visits =
        countFiles([&](const std::string& directory) { thin(directory), thin(home.path()); });
    EXPECT_EQ(visits, 2 + 5)
        << "the first and the last file of the first directory, then the last directory";
}

TEST(Tail, IsValidTextOfARegularFileFromTheCutOn) {
    using namespace std::string_literals;
    TemporaryHome home;
    for (const auto& text : {""s, "1234"s, "x1234"s, "\xFF\xE2\x80\x94x"s, "a\0b\r\n"s})
        EXPECT_EQ(LocalFiles::tail(home.write("log", text), 4),
                  text.substr(text.size() > 4 ? text.size() - 4 : 0));
    for (const char* text :
         {"\xE2\x80\x94xx", "xxx\xE2\x80", "\xC0\x80", "\xED\xA0\x80", "\xF4\x90\x80\x80"})
        EXPECT_EQ(LocalFiles::tail(home.write("log", text), 4), std::nullopt) << text;
    for (std::size_t i = 0; i < 18; i++)
        EXPECT_FALSE(
            LocalFiles::tail(home.write("log", std::string(40, 'a').replace(i, 1, "\xFF")), 99))
            << i;
}

TEST(Tail, OfAnythingButARegularFileIsAbsentAtOnce) {
    TemporaryHome home;
    const auto path = home.write("log", "");
    fs::resize_file(path, 1L << 31);
    EXPECT_EQ(LocalFiles::tail(path, 2), std::string(2, '\0'));
    for (const std::size_t size : {64 << 20, (64 << 20) + 1}) {
        fs::resize_file(path, size);
        EXPECT_EQ(RegularFile::contents(path).has_value(), size == 64 << 20);
    }
    EXPECT_EQ(home.shell("mkfifo fifo; ln -s loop loop"), 0);
    const int descriptor = dup(0);
    close(descriptor);
    alarm(5);  // a FIFO must not be waited for
    for (const char* name : {"fifo", "loop", ".", "none", "../../../../../../../../dev/zero"})
        EXPECT_FALSE(LocalFiles::tail(home.at(name), 100) || RegularFile::contents(home.at(name)))
            << name;
    alarm(0);
    EXPECT_EQ(dup(0), descriptor) << "a file is left open";
    close(descriptor);
}
