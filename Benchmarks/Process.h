#pragma once

#include <sys/types.h>

#include <map>
#include <string>
#include <vector>

/// A program that runs beside this one until the object or this process ends.
class Process {
public:
    /// `environment`, as "NAME=value", is all that it gets.
    Process(const std::vector<std::string>& command, const std::vector<std::string>& environment);
    ~Process();
    Process(const Process&) = delete;

    std::string firstLine() const;  ///< Of its standard output; waits for it.

    /// Of "status", "smaps_rollup" or another file that the kernel has for it, in the kernel's
    /// units.
    double field(const std::string& file, const std::string& name) const;

    /// CPU time so far, in seconds; threads that have ended count.
    double cpuTime() const;

    /// How often each thread was switched away from, by thread.
    std::map<std::string, long> switches() const;

private:
    pid_t id = 0;
    int output = -1;
};
