#include "Process.h"

#include <fcntl.h>
#include <signal.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <time.h>
#include <unistd.h>

#include <algorithm>
#include <filesystem>
#include <fstream>

#include "Measure.h"

namespace {

double fieldOf(const std::string& file, const std::string& name) {
    std::ifstream stream(file);
    for (std::string line; std::getline(stream, line);)
        if (line.starts_with(name + ":")) return std::stod(line.substr(name.size() + 1));
    return 0;
}

}  // namespace

Process::Process(const std::vector<std::string>& command,
                 const std::vector<std::string>& environment) {
    const auto arguments = Measure::pointers(command);
    const auto variables = Measure::pointers(environment);
    int ends[2] = {-1, -1};
    if (pipe2(ends, O_CLOEXEC) != 0) return;
    output = ends[0];
    id = fork();
    if (id == 0) {
        prctl(PR_SET_PDEATHSIG, SIGTERM);
        dup2(ends[1], STDOUT_FILENO);
        dup2(open("/dev/null", O_WRONLY | O_CLOEXEC), STDERR_FILENO);
        execvpe(arguments[0], arguments.data(), variables.data());
        _exit(127);
    }
    close(ends[1]);
}

Process::~Process() {
    if (id > 0) kill(id, SIGTERM);
    if (id > 0) waitpid(id, nullptr, 0);
    close(output);
}

std::string Process::firstLine() const {
    std::string line;
    for (char next; read(output, &next, 1) == 1 && next != '\n';)
        line += next;
    return line;
}

double Process::field(const std::string& file, const std::string& name) const {
    return fieldOf("/proc/" + std::to_string(id) + "/" + file, name);
}

double Process::cpuTime() const {
    clockid_t clock{};
    timespec time{};
    if (clock_getcpuclockid(id, &clock) != 0 || clock_gettime(clock, &time) != 0) return 0;
    return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_nsec) / 1e9;
}

std::map<std::string, long> Process::switches() const {
    std::map<std::string, long> counts;
    std::error_code gone;
    for (const auto& task :
         std::filesystem::directory_iterator("/proc/" + std::to_string(id) + "/task", gone)) {
        const std::string file = task.path() / "status";
        const double both =
            fieldOf(file, "voluntary_ctxt_switches") + fieldOf(file, "nonvoluntary_ctxt_switches");
        counts[task.path().filename()] = static_cast<long>(both);
    }
    return counts;
}
