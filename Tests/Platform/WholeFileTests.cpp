#include "Platform/WholeFile.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <signal.h>
#include <sys/resource.h>

#include "Tests/Support/TemporaryHome.h"

namespace {

namespace fs = std::filesystem;

/// Whether "new" now stands where the path in the home directory leads.
bool writes(const std::string& name) {
    return WholeFile::write(TemporaryHome::at(name), "new", WholeFile::Flush::yes) &&
           textOf(TemporaryHome::at(name)) == "new";
}

}  // namespace

TEST(WholeFile, AFailedWriteLeavesWhatWasThere) {
    const TemporaryHome home;
    TemporaryHome::write("kept", "kept");
    ASSERT_EQ(TemporaryHome::shell("mkfifo fifo; ln -s fifo to-fifo; ln -s . to-directory;"
                                   "ln -s /dev/null to-device; ln -s /proc/self/fd fd;"
                                   "ln -s fd/7 to-open; ln -s to-open to-link"),
              0);
    EXPECT_EQ(dup2(open(TemporaryHome::at("kept").c_str(), O_RDONLY), 7), 7);
    signal(SIGXFSZ, SIG_IGN);
    rlimit limit;
    getrlimit(RLIMIT_FSIZE, &limit);
    const auto usual = std::exchange(limit.rlim_cur, 2);
    const auto before = TemporaryHome::tree();
    setrlimit(RLIMIT_FSIZE, &limit);
    EXPECT_FALSE(writes("kept")) << "though only two bytes fit";
    limit.rlim_cur = usual;
    setrlimit(RLIMIT_FSIZE, &limit);
    for (const char* name : {"none/file", "", "kept/file", "fifo", "to-fifo", "to-directory",
                             "to-device", "to-open", "to-link"})
        EXPECT_FALSE(writes(name)) << name;
    const auto after = TemporaryHome::tree();
    EXPECT_EQ(after.substr(after.find('\n')), before.substr(before.find('\n')));
}

TEST(WholeFile, ALinkToAFileOrToNothingIsReplaced) {
    const TemporaryHome home;
    EXPECT_TRUE(writes(std::string(255, 'x'))) << "a name of the maximum length";
    TemporaryHome::write("kept", "kept");
    for (const char* target : {"kept", "nothing"}) {
        fs::create_symlink(target, TemporaryHome::at("link"));
        EXPECT_TRUE(writes("link"));
        EXPECT_FALSE(fs::is_symlink(TemporaryHome::at("link")));
        fs::remove(TemporaryHome::at("link"));
    }
    EXPECT_EQ(textOf(TemporaryHome::at("kept")), "kept");
    EXPECT_FALSE(fs::exists(TemporaryHome::at("nothing")));
}

TEST(WholeFile, OnlyAFileOfOnesOwnHandsOnItsPermissions) {
    const TemporaryHome home;
    const auto path = TemporaryHome::write("file", "old");
    const mode_t usual = umask(027);
    fs::permissions(path, fs::perms(0606));
    EXPECT_TRUE(writes("file"));
    EXPECT_EQ(fs::status(path).permissions(), fs::perms(0606));
    if (chown(path.c_str(), 65534, 65534) != 0) fs::remove(path);
    EXPECT_TRUE(writes("file"));
    EXPECT_EQ(fs::status(path).permissions(), fs::perms(0640));
    umask(usual);
}
