#include <gtest/gtest.h>
#include <pwd.h>
#include <sys/mman.h>
#include <sys/ptrace.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdint>
#include <fstream>

#include "Platform/Clock.h"
#include "Platform/HomeDirectory.h"
#include "Platform/LoadedCode.h"

namespace {

/// KiB of files, the program's and its libraries' among them, that the process has in memory.
long residentFiles() {
    std::ifstream status("/proc/self/status");
    for (std::string line; std::getline(status, line);)
        if (line.starts_with("RssFile:")) return std::stol(line.substr(8));
    return 0;
}

constexpr char breakpoint = '\xCC';

/// Writes one over the first byte of residentFiles, as a debugger does, and returns its address.
volatile char* setBreakpoint() {
    auto* code = reinterpret_cast<char*>(&residentFiles);
    const long size = sysconf(_SC_PAGESIZE);
    char* page = code - reinterpret_cast<std::uintptr_t>(code) % size;
    EXPECT_EQ(mprotect(page, size, PROT_READ | PROT_WRITE | PROT_EXEC), 0);
    *code = breakpoint;
    mprotect(page, size, PROT_READ | PROT_EXEC);
    return code;
}

bool inAnotherProcess(bool (*holds)()) {
    const pid_t process = fork();
    if (process == 0) _exit(holds() ? EXIT_SUCCESS : EXIT_FAILURE);
    int status = EXIT_FAILURE;
    return waitpid(process, &status, 0) == process && status == EXIT_SUCCESS;
}

}  // namespace

TEST(HomeDirectory, ARelativeOrEmptyHomeIsReplacedByThePasswordDatabase) {
    const passwd* user = getpwuid(getuid());
    for (const char* home : {"", "relative", "~", "/none"}) {
        setenv("HOME", home, 1);
        EXPECT_EQ(HomeDirectory::path(), *home == '/' ? home : user ? user->pw_dir : "/") << home;
    }
    EXPECT_EQ(HomeDirectory::expanding("~/a~") + HomeDirectory::expanding("~root"), "/none/a~~root");
}

TEST(Clock, ADayStartsAtItsFirstMomentAlsoWhereMidnightIsSkippedOrRepeated) {
    // Brazil goes forwards at 0:00 and back at 0:00 to 23:00 of the day before, Cuba back at 1:00 to 0:00.
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
        EXPECT_EQ(Clock::startOfDay(instant), start) << zone << ", " << instant - start << " s into the day";
    }
}

TEST(LoadedCode, LeavesMemory) {
    const long before = residentFiles();
    LoadedCode::release();
    EXPECT_LT(residentFiles(), before * 2 / 3);
}

TEST(LoadedCode, KeepsADebuggersBreakpoints) {
    EXPECT_TRUE(inAnotherProcess([] {
        ptrace(PTRACE_TRACEME, 0, nullptr, nullptr);
        volatile char* code = setBreakpoint();
        LoadedCode::release();
        return *code == breakpoint;
    }));
    EXPECT_TRUE(inAnotherProcess([] {
        volatile char* code = setBreakpoint();
        LoadedCode::release();
        return *code != breakpoint;
    })) << "nobody traces it, and yet nothing was released";
}
