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

    /// What the kernel says of it under "VmRSS", "Threads" and the like, in its units.
    double status(const std::string& field) const;

    /// How often each thread gave up or lost its processor, by thread.
    std::map<std::string, long> switches() const;

private:
    pid_t id = 0;
    int output = -1;
};
