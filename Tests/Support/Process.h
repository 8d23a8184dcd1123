#pragma once

#include <sys/wait.h>

#include <cstdlib>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

#include "Tests/Support/TemporaryHome.h"

struct ProcessResult {
    int status = -1;  ///< Exit status; 124 and 137 after the time limit.
    std::string out;
    std::string err;
};

inline std::string textOf(const std::string& file) {
    std::ifstream stream(file, std::ios::binary);
    return {std::istreambuf_iterator<char>(stream), {}};
}

/// Runs a program with just this environment and no input, for at most 20 seconds.
inline ProcessResult run(const std::vector<std::string>& arguments, const std::vector<std::string>& environment) {
    const std::string out = TemporaryHome::path() + ".out", err = TemporaryHome::path() + ".err";
    std::string command = "env -i";
    for (const auto& text : environment)
        command += " '" + text + "'";
    command += " timeout -k 1 20";
    for (const auto& text : arguments)
        command += " '" + text + "'";
    const int status = std::system((command + " < /dev/null > " + out + " 2> " + err).c_str());
    ProcessResult result{WEXITSTATUS(status), textOf(out), textOf(err)};
    for (const auto& file : {out, err})
        std::filesystem::remove(file);
    return result;
}
