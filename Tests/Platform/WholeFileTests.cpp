#include "Platform/WholeFile.h"

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

TEST(WholeFile, ReplacesFilesAloneAndKeepsTheirPermissions) {
    const TemporaryHome home;
    const auto path = TemporaryHome::write("file", "old"), fifo = TemporaryHome::at("fifo");
    fs::permissions(path, fs::perms(0600));
    EXPECT_TRUE(WholeFile::write(path, "new", WholeFile::Flush::no));
    EXPECT_EQ(fs::status(path).permissions(), fs::perms(0600));
    ASSERT_EQ(TemporaryHome::shell("mkfifo fifo"), 0);
    EXPECT_FALSE(WholeFile::write(fifo, "new", WholeFile::Flush::no));
    EXPECT_TRUE(fs::is_fifo(fifo));
}
