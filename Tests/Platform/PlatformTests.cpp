#include <gtest/gtest.h>
#include <pwd.h>
#include <sys/mman.h>
#include <unistd.h>

#include <cstdint>
#include <cstring>
#include <fstream>

#include "Platform/Clock.h"
#include "Platform/HardwareModel.h"
#include "Platform/HomeDirectory.h"
#include "Platform/ResidentSet.h"

namespace {

/// KiB of files, the program's and its libraries' among them, that the process has in memory.
long residentFiles() {
    std::ifstream status("/proc/self/status");
    for (std::string line; std::getline(status, line);)
        if (line.starts_with("RssFile:")) return std::stol(line.substr(8));
    return 0;
}

/// There to be overwritten.
[[gnu::noinline]] void neverCalled() {}

}  // namespace

TEST(HomeDirectory, ARelativeOrEmptyHomeIsReplacedByThePasswordDatabase) {
    const passwd* user = getpwuid(getuid());
    for (const char* home : {"", "relative", "~", "/none"}) {
        setenv("HOME", home, 1);
        EXPECT_EQ(HomeDirectory::path(), *home == '/' ? home : user ? user->pw_dir : "/") << home;
    }
    EXPECT_EQ(HomeDirectory::expanding("~/a~") + HomeDirectory::expanding("~root"),
              "/none/a~~root");
}

TEST(Clock, ADayStartsAtItsFirstMomentAlsoWhereMidnightIsSkippedOrRepeated) {
    // Brazil goes forwards at 0:00 and back at 0:00 to 23:00 of the day before, Cuba back at 1:00
    // to 0:00.
    const char *brazil = "BRT3BRST,M10.3.0/0,M2.3.0/0", *cuba = "CST5CDT,M3.2.0/0,M11.1.0/1";
    const std::tuple<const char*, double, double> cases[] = {{"UTC0", 86399.9, 0},
                                                             {"UTC0", -0.5, -86400},
                                                             {brazil, 1540125000, 1540090800},
                                                             {brazil, 1540090800, 1540090800},
                                                             {brazil, 1540090799, 1540004400},
                                                             {brazil, 1518921000, 1518832800},
                                                             {cuba, 1541350800, 1541304000},
                                                             {cuba, 1541309400, 1541304000}};
    for (const auto& [zone, instant, start] : cases) {
        setenv("TZ", zone, 1);
        tzset();
        EXPECT_EQ(Clock::startOfDay(instant), start)
            << zone << ", " << instant - start << " s into the day";
    }
}

TEST(ResidentSet, IsLessOnceTrimmed) {
    const long before = residentFiles();
    ResidentSet::trim();
    EXPECT_LT(residentFiles(), before * 2 / 3);
}

TEST(ResidentSet, KeepsCodeThatWasChanged) {
    auto* code = reinterpret_cast<char*>(&neverCalled);
    const long size = sysconf(_SC_PAGESIZE);
    char* page = code - reinterpret_cast<std::uintptr_t>(code) % size;
    ASSERT_EQ(mprotect(page, size, PROT_READ | PROT_WRITE | PROT_EXEC), 0);
    constexpr char breakpoint = '\xCC';
    std::memset(code, breakpoint, 1);
    ASSERT_EQ(mprotect(page, size, PROT_READ | PROT_EXEC), 0);
    ResidentSet::trim();
    EXPECT_EQ(*const_cast<volatile char*>(code), breakpoint);
}

TEST(HardwareModel, IsReadFromTheKernelsFiles) {
    // Not every machine tells its model; all files of the kernel give a page as their size.
    const std::string path = "/sys/kernel/mm/transparent_hugepage/enabled";
    std::string line;
    if (!std::getline(std::ifstream(path), line)) GTEST_SKIP() << "no such file here";
    EXPECT_EQ(HardwareModel::namedIn(path), line);
    EXPECT_EQ(HardwareModel::namedIn("/sys/none"), "");
}
