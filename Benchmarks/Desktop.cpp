#include "Desktop.h"

#include <array>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <optional>
#include <thread>

#include "Data.h"
#include "Measure.h"
#include "Tray.h"

namespace {

using Command = std::vector<std::string>;

constexpr int starts = 15;
constexpr int refreshRuns = 3;                        // of a thousand refreshes each
constexpr auto startTime = std::chrono::seconds(10);  // until start and first pass are over
constexpr auto idleTime = std::chrono::minutes(1);
// At the default interval of 20 seconds Codex's usage is requested with every 4th pass, Claude's
// with every 16th. So this is one whole period.
constexpr auto workTime = std::chrono::seconds(320);
constexpr int workRequests = 5;
constexpr double interval = 20;        // seconds, the default
constexpr double longInterval = 3600;  // has no pass in the idle time
constexpr double extraSwitches = 2;    // more than the bare program's, as noise

// Without budgets; these notice growth.
constexpr double maxStartRatio = 3;
constexpr double maxThreadRatio = 2;

/// A program that has started, which it has when the tray shows its icon.
class Running {
public:
    Running(Tray& tray, const Command& command) {
        took = Measure::milliseconds([&] {
            process.emplace(command, tray.environment());
            Measure::requireSame(command[0], tray.awaitIcon() ? "shown" : "no icon", "shown");
        });
    }

    double took = 0;  ///< Until the icon, in milliseconds.
    std::optional<Process> process;
};

/// A thread that has ended since then counts once.
double switchesSince(const std::map<std::string, long>& before,
                     const std::map<std::string, long>& now) {
    long count = 0;
    for (const auto& [thread, switches] : before)
        count += now.contains(thread) ? now.at(thread) - switches : 1;
    for (const auto& [thread, switches] : now)
        if (!before.contains(thread)) count += switches;
    return static_cast<double>(count);
}

void setInterval(double seconds) {
    TemporaryHome::write(".config/quillet/config.json",
                         nlohmann::json{{"intervalSeconds", seconds}}.dump());
}

double privateMemory(const Running& program) {
    return program.process->field("smaps_rollup", "Private_Dirty") / 1024;  // MiB
}

/// Both programs side by side, without a pass.
void idleMinute(const Process& ours, const Process& bare) {
    const std::array before = {ours.switches(), bare.switches()};
    std::this_thread::sleep_for(idleTime);
    const double limit = switchesSince(before[1], bare.switches()) + extraSwitches;
    Measure::compare("thread switches in an idle minute, limit bare icon + 2",
                     switchesSince(before[0], ours.switches()), limit, "   ", 1);
    Measure::compare("threads while idle : a bare icon's", ours.field("status", "Threads"),
                     bare.field("status", "Threads"), "   ", maxThreadRatio);
}

}  // namespace

void Desktop::run(const HTTPSServer& server) {
    if (std::system("command -v trayer >/dev/null") != 0) {
        std::puts("Left out, as trayer is not installed: start, idle and CPU time");
        return;
    }
    const std::vector<std::string> proxy = {"https_proxy=http://" + server.address()};
    Tray tray(proxy);
    Tray idleTray(proxy);  // an application of its own, as a session has only one
    const Command quillet = {QUILLET};
    const Command bare = {BARE_TRAY};
    const auto start = [&tray](const Command& command) {
        return [&] { return Running(tray, command).took; };
    };
    Measure::compareFigures("start to the icon in the tray : a bare icon's", starts, start(quillet),
                            start(bare), "ms ", maxStartRatio);

    Data::writeSessions();
    setInterval(longInterval);
    const Running idle(idleTray, quillet);
    const Running icon(idleTray, bare);
    setInterval(interval);
    const Running working(tray, quillet);
    std::this_thread::sleep_for(startTime);
    const int requests = server.seen()["requests"];
    const double cpuTime = working.process->cpuTime();
    const auto end = std::chrono::steady_clock::now() + workTime;

    idleMinute(*idle.process, *icon.process);
    std::this_thread::sleep_until(end);
    constexpr double periods = 3600.0 / workTime.count();  // in an hour
    Measure::compare("CPU time of an hour with 5,000 logs, limit 2 s",
                     periods * (working.process->cpuTime() - cpuTime), 2, "s  ", 1);
    char name[80];
    std::snprintf(name, sizeof name, "private memory while idle, limit 8 MiB (bare icon %.1f)",
                  privateMemory(icon));
    Measure::compare(name, privateMemory(working), 8, "MiB", 1);
    const int made = server.seen()["requests"].get<int>() - requests;
    Measure::requireSame("requests", made < workRequests ? std::to_string(made) : "enough",
                         "enough");
}

void Desktop::refresh(bool verbose) {
    const auto held = [verbose] {
        const std::string output =
            Measure::run({"env", "HOME=" + TemporaryHome::beside("refresh"), REFRESH});
        if (verbose) std::fputs(output.c_str(), stdout);
        return std::strtod(output.c_str(), nullptr);
    };
    Measure::compareFigures(
        "a refresh holds the main thread, 99 of 100, limit 8 ms", refreshRuns, held,
        [] { return 8.0; }, "ms ", 1);
}
