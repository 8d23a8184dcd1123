#include "Platform/WholeFile.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <signal.h>
#include <sys/resource.h>

#include "Tests/Support/TemporaryHome.h"

namespace fs = std::filesystem;

TEST(WholeFile, AFailedWriteLeavesWhatWasThere) {
    const TemporaryHome home;
    const auto path = TemporaryHome::write("file", "old"),
               maxName = TemporaryHome::at(std::string(255, 'x'));
    EXPECT_TRUE(WholeFile::write(maxName, "x", WholeFile::Flush::yes))
        << "a name of the maximum length";
    fs::remove(maxName);
    for (const auto& bad : {TemporaryHome::at("none/file"), TemporaryHome::path(), path + "/file",
                            std::string(), std::string("/proc/file")})
        EXPECT_FALSE(WholeFile::write(bad, "new", WholeFile::Flush::no)) << bad;
    signal(SIGXFSZ, SIG_IGN);
    rlimit limit;
    getrlimit(RLIMIT_FSIZE, &limit);
    const auto usual = std::exchange(limit.rlim_cur, 10);
    setrlimit(RLIMIT_FSIZE, &limit);
    EXPECT_FALSE(WholeFile::write(path, "more than fits", WholeFile::Flush::yes));
    limit.rlim_cur = usual;
    setrlimit(RLIMIT_FSIZE, &limit);
    EXPECT_EQ(textOf(path), "old");
    EXPECT_EQ(std::distance(fs::directory_iterator(TemporaryHome::path()), {}), 1);
}

TEST(WholeFile, ReplacesFilesAndLinksToFilesAlone) {
    const TemporaryHome home;
    TemporaryHome::write("kept", "kept");
    ASSERT_EQ(TemporaryHome::shell("mkfifo fifo; ln -s fifo to-fifo; ln -s . to-directory;"
                                   "ln -s /dev/null to-device"),
              0);
    const int open = ::open(TemporaryHome::at("kept").c_str(), O_RDONLY);
    fs::create_symlink("/proc/self/fd/", TemporaryHome::at("fd"));
    fs::create_symlink("fd/" + std::to_string(open), TemporaryHome::at("to-open"));
    fs::create_symlink("to-open", TemporaryHome::at("to-link"));
    const auto before = TemporaryHome::tree();
    for (const char* name : {"fifo", "to-fifo", "to-directory", "to-device", "to-open", "to-link"})
        EXPECT_FALSE(WholeFile::write(TemporaryHome::at(name), "new", WholeFile::Flush::no))
            << name;
    EXPECT_EQ(TemporaryHome::tree(), before);
    for (const char* target : {"kept", "nothing"}) {
        const auto link = TemporaryHome::at("link");
        fs::create_symlink(target, link);
        EXPECT_TRUE(WholeFile::write(link, "new", WholeFile::Flush::no));
        EXPECT_FALSE(fs::is_symlink(link));
        EXPECT_EQ(textOf(link), "new");
        fs::remove(link);
    }
    EXPECT_EQ(textOf(TemporaryHome::at("kept")), "kept");
    EXPECT_FALSE(fs::exists(TemporaryHome::at("nothing")));
}

TEST(WholeFile, OnlyAFileOfOnesOwnHandsOnItsPermissions) {
    const TemporaryHome home;
    const auto path = TemporaryHome::write("file", "old");
    const auto permissionsAfterWrite = [&path] {
        EXPECT_TRUE(WholeFile::write(path, "new", WholeFile::Flush::no));
        return fs::status(path).permissions();
    };
    const mode_t usual = umask(027);
    fs::permissions(path, fs::perms(0606));
    EXPECT_EQ(permissionsAfterWrite(), fs::perms(0606));
    if (chown(path.c_str(), 65534, 65534) == 0) {
        EXPECT_EQ(permissionsAfterWrite(), fs::perms(0640));
    }
    fs::remove(path);
    EXPECT_EQ(permissionsAfterWrite(), fs::perms(0640));
    umask(usual);
}
