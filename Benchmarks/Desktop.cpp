#include "Desktop.h"

#include <sched.h>
#include <sys/mount.h>

#include <array>
#include <cerrno>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <optional>
#include <thread>

#include "Measure.h"
#include "Tray.h"

namespace {

using Command = std::vector<std::string>;

constexpr int starts = 15;
constexpr int thousands = 3;                         // of refreshes
constexpr auto settling = std::chrono::seconds(65);  // until the start has come to rest
constexpr auto idleTime = std::chrono::minutes(1);
constexpr auto refreshTime = std::chrono::seconds(30);
constexpr auto refreshInterval = std::chrono::seconds(140);
static_assert(settling + idleTime < refreshInterval &&
              refreshInterval < settling + idleTime + refreshTime);
constexpr double noise = 2;  // switches in the idle time

// Alarms of ours, for growth to be noticed.
constexpr double startAlarm = 3;
constexpr double threadAlarm = 2;

/// The programs trust the system's authorities only, so ours joins them where only this process and
/// its children see it.
void trust(const HTTPSServer& server) {
    const char* const system = "/etc/ssl/certs/ca-certificates.crt";
    const std::string both = TemporaryHome::beside("authorities.pem");
    std::ofstream(both) << textOf(system) << textOf(server.certificates());
    const bool done = unshare(CLONE_NEWNS) == 0 &&
                      mount(nullptr, "/", nullptr, MS_REC | MS_PRIVATE, nullptr) == 0 &&
                      mount(both.c_str(), system, nullptr, MS_BIND, nullptr) == 0;
    Measure::requireSame("a mount namespace", done ? "had" : std::strerror(errno), "had");
}

/// A program with an icon in the tray. Both have started when the tray shows their icon, taken into
/// its window and mapped there.
class Running {
public:
    Running(Tray& tray, const Command& command) {
        took = Measure::milliseconds([&] {
            process.emplace(command, tray.environment());
            Measure::requireSame(command[0], tray.awaitIcon() ? "shown" : "no icon", "shown");
        });
    }

    double took = 0;  ///< Until then, in milliseconds.
    std::optional<Process> process;
};

/// Of threads that ended since then one is counted.
double switchesSince(const std::map<std::string, long>& before,
                     const std::map<std::string, long>& now) {
    long count = 0;
    for (const auto& [thread, switches] : before)
        count += now.contains(thread) ? now.at(thread) - switches : 1;
    for (const auto& [thread, switches] : now)
        if (!before.contains(thread)) count += switches;
    return static_cast<double>(count);
}

void printMemory(const char* name, const Process& process) {
    std::printf("%-10s", name);
    for (const char* part : {"RssAnon", "RssFile", "RssShmem"})
        std::printf("  %s %.1f MiB", part, process.status(part) / 1024);
    std::puts("");
}

struct Idle {
    double resident, threads, switches;  ///< MiB, and per minute.
};

std::array<Idle, 2> whileIdle(const std::array<const Process*, 2>& programs) {
    std::this_thread::sleep_for(settling);
    const std::array before = {programs[0]->switches(), programs[1]->switches()};
    std::this_thread::sleep_for(idleTime);
    const std::array after = {programs[0]->switches(), programs[1]->switches()};
    std::this_thread::sleep_for(refreshTime);
    Measure::requireSame(
        "after the idle minute",
        switchesSince(after[0], programs[0]->switches()) > 0 ? "a refresh" : "none", "a refresh");
    std::array<Idle, 2> found{};
    for (std::size_t i = 0; i < found.size(); ++i) {
        found[i] = {programs[i]->status("VmRSS") / 1024, programs[i]->status("Threads"),
                    switchesSince(before[i], after[i])};
    }
    return found;
}

}  // namespace

void Desktop::run(const HTTPSServer& server, bool verbose) {
    if (std::system("command -v trayer >/dev/null") != 0) {
        std::puts("Left out, as trayer is not installed: start and idle");
        return;
    }
    trust(server);
    TemporaryHome::write(".config/quillet/config.json",
                         R"({"intervalSeconds":)" + std::to_string(refreshInterval.count()) + "}");
    Tray tray({"https_proxy=http://" + server.address()});
    const Command quillet = {QUILLET};
    const Command bare = {BARE_TRAY};
    const auto start = [&tray](const Command& command) {
        return [&] { return Running(tray, command).took; };
    };
    Measure::compareFigures("the application, start to its icon in the tray : a bare icon's",
                            starts, start(quillet), start(bare), "ms ", startAlarm);

    const Running ours(tray, quillet);
    const Running other(tray, bare);
    const auto [app, icon] = whileIdle({&*ours.process, &*other.process});
    Measure::compare("resident while idle, signed in everywhere : a bare icon's", app.resident,
                     icon.resident, "MiB", 1.3);
    Measure::compare("threads while idle : a bare icon's", app.threads, icon.threads, "   ",
                     threadAlarm);
    Measure::compare("switches of threads in an idle minute, limit a bare icon's + 2", app.switches,
                     icon.switches + noise, "   ", 1);
    if (verbose) printMemory("ours", *ours.process);
    if (verbose) printMemory("bare icon", *other.process);
}

void Desktop::refresh(bool verbose) {
    const auto held = [verbose] {
        const std::string output =
            Measure::run({"env", "HOME=" + TemporaryHome::beside("refresh"), REFRESH});
        if (verbose) std::fputs(output.c_str(), stdout);
        return std::strtod(output.c_str(), nullptr);
    };
    Measure::compareFigures(
        "a refresh holds the main thread, 99 of 100 times, limit 8 ms", thousands, held,
        [] { return 8.0; }, "ms ", 1);
}
