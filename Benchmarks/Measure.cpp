#include "Measure.h"

#include <fcntl.h>
#include <spawn.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>

namespace {

bool allGood = true;

[[noreturn]] void fail(const std::string& why) {
    std::fprintf(stderr, "%s\n", why.c_str());
    std::exit(2);
}

double middle(std::vector<double>& values) {
    const auto at = values.begin() + static_cast<std::ptrdiff_t>(values.size() / 2);
    std::nth_element(values.begin(), at, values.end());
    return *at;
}

void addLine(const std::string& name, double ours, double other, const char* unit, double budget) {
    static const bool headed =
        std::printf("%-54s %12s %12s %6s %6s\n", "", "ours", "other", "ratio", "budget") > 0;
    const bool good = headed && ours / other <= budget;
    std::printf("%-54s %8.3f %s %8.3f %s %6.2f %6.2f  %s\n", name.c_str(), ours, unit, other, unit,
                ours / other, budget, good ? "ok" : "OVER");
    std::fflush(stdout);
    allGood = allGood && good;
}

struct rusage requireSuccess(pid_t child, const std::string& name) {
    int status = 0;
    struct rusage usage {};
    if (wait4(child, &status, 0, &usage) != child || status != 0) fail(name + " failed");
    return usage;
}

}  // namespace

void Measure::compare(const std::string& name, int rounds, const Work& ours, const Work& other,
                      double budget) {
    compareFigures(
        name, rounds, [&] { return milliseconds(ours); }, [&] { return milliseconds(other); },
        "ms ", budget);
}

void Measure::compareFigures(const std::string& name, int rounds, const Figure& ours,
                             const Figure& other, const std::string& unit, double budget) {
    std::vector<double> oursFound;
    std::vector<double> otherFound;
    ours();  // once for the caches
    other();
    for (int round = 0; round < rounds; ++round) {
        oursFound.push_back(ours());
        otherFound.push_back(other());
    }
    addLine(name, middle(oursFound), middle(otherFound), unit.c_str(), budget);
}

void Measure::compare(const std::string& name, double ours, double limit, const std::string& unit,
                      double budget) {
    addLine(name, ours, limit, unit.c_str(), budget);
}

double Measure::milliseconds(const Work& work) {
    const auto start = std::chrono::steady_clock::now();
    work();
    return std::chrono::duration<double, std::milli>(std::chrono::steady_clock::now() - start)
        .count();
}

double Measure::median(int rounds, const Work& ours) {
    std::vector<double> took;
    took.reserve(static_cast<std::size_t>(rounds));
    ours();
    for (int round = 0; round < rounds; ++round)
        took.push_back(milliseconds(ours));
    return middle(took);
}

std::vector<char*> Measure::pointers(const std::vector<std::string>& strings) {
    std::vector<char*> all(strings.size() + 1);
    std::ranges::transform(strings, all.begin(),
                           [](const auto& text) { return const_cast<char*>(text.c_str()); });
    return all;
}

bool Measure::withinBudgets() {
    return allGood;
}

std::string Measure::run(const std::vector<std::string>& command) {
    int ends[2];
    if (pipe2(ends, O_CLOEXEC) != 0) fail("no pipe");
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_adddup2(&actions, ends[1], STDOUT_FILENO);
    pid_t child = 0;
    const int error = posix_spawnp(&child, command[0].c_str(), &actions, nullptr,
                                   pointers(command).data(), environ);
    posix_spawn_file_actions_destroy(&actions);
    close(ends[1]);
    if (error != 0) fail("no " + command[0]);

    std::string output;
    char buffer[4096];
    for (ssize_t count; (count = read(ends[0], buffer, sizeof buffer)) > 0;) {
        output.append(buffer, static_cast<std::size_t>(count));
    }
    close(ends[0]);
    requireSuccess(child, command[0]);
    return output;
}

// A child's peak includes what it had before exec. After posix_spawn that is all of this process's
// memory, after fork only a few pages.
double Measure::peakMemory(const std::vector<std::string>& command) {
    const pid_t child = fork();
    if (child == 0) {
        const int null = open("/dev/null", O_WRONLY | O_CLOEXEC);
        dup2(null, STDOUT_FILENO);
        execvp(command[0].c_str(), pointers(command).data());
        _exit(127);
    }
    return static_cast<double>(requireSuccess(child, command[0]).ru_maxrss) / 1024;
}

void Measure::requireSame(const std::string& what, const std::string& ours,
                          const std::string& other) {
    if (ours != other) fail(what + ": " + ours + " here, " + other + " there");
}
