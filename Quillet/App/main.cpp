#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <csignal>
#include <cstdio>
#include <string_view>
#include <vector>

#include "CLI/CLI.h"

namespace {

constexpr const char* version = "Quillet 2.0.0 by ZENDRIK\n";

constexpr const char* usage =
    "Quillet by ZENDRIK\n"
    "usage: quillet [command]\n"
    "\n"
    "  (no command)   run the menu-bar app\n"
    "  status [--json]  print current usage for all providers\n"
    "  preview [--out FILE]  render the strip to a PNG\n"
    "  version        print the version\n";

bool needsDesktop(std::string_view command) {
    constexpr std::string_view commands[] = {"watch", "preview", "panel", "menubar"};
    return std::ranges::find(commands, command) != std::end(commands);
}

/// A report that nobody reads is no failure, and what is opened later must not take the place of a closed standard
/// stream, or a message could end up there.
void settleStandardStreams() {
    signal(SIGPIPE, SIG_IGN);
    int descriptor = 0;
    while (descriptor >= 0 && descriptor <= STDERR_FILENO)
        descriptor = open("/dev/null", O_RDWR);
    if (descriptor > STDERR_FILENO) close(descriptor);
}

}  // namespace

int main(int argc, char** argv) {
    settleStandardStreams();
    const std::vector<std::string_view> arguments(argv + std::min(argc, 1), argv + argc);
    const std::string_view command = arguments.empty() ? "watch" : arguments.front();

    if (command == "status") {
        CLI::status(std::ranges::find(arguments, "--json") != arguments.end());
    } else if (needsDesktop(command)) {
        std::fputs("quillet: the desktop half is not built yet\n", stderr);
    } else if (command == "version" || command == "--version") {
        std::fputs(version, stdout);
    } else {
        std::fputs(usage, stdout);
    }
    return 0;
}
