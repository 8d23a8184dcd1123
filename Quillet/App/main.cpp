#include <dlfcn.h>
#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <string_view>
#include <vector>

#include "CLI/CLI.h"

namespace {

constexpr const char* versionLine = "Quillet " QUILLET_VERSION " by ZENDRIK\n";

constexpr const char* usage =
    "Quillet by ZENDRIK\n"
    "usage: quillet [command]\n"
    "\n"
    "  (no command)   run the menu-bar app\n"
    "  status [--json]  print current usage for all providers\n"
    "  preview [--out FILE]  render the strip to a PNG\n"
    "  version        print the version\n";

using Arguments = std::vector<std::string>;

bool drawsPicture(std::string_view command) {
    constexpr std::string_view commands[] = {"preview", "panel", "menubar"};
    return std::ranges::find(commands, command) != std::end(commands);
}

/// Undoes what the process inherited. This comes first, as the environment may change only before
/// there are threads.
void isolateProcess() {
    // libcurl would write each connection's keys to the first, and OpenSSL would load what the
    // others name.
    for (const char* name : {"SSLKEYLOGFILE", "OPENSSL_CONF", "OPENSSL_MODULES", "OPENSSL_ENGINES"})
        unsetenv(name);
    signal(SIGPIPE, SIG_IGN);  // a report that nobody reads is no failure
    signal(SIGXFSZ, SIG_IGN);  // a write beyond a limit fails as on a full disk
    // A file opened later must not take the number of a closed standard stream, or messages would
    // be written to it.
    int descriptor = 0;
    while (descriptor >= 0 && descriptor <= STDERR_FILENO)
        descriptor = open("/dev/null", O_RDWR);
    if (descriptor > STDERR_FILENO) close(descriptor);
}

std::string outPath(const Arguments& arguments) {
    const auto option = std::ranges::find(arguments, "--out");
    const bool given = option != arguments.end() && option + 1 != arguments.end();
    return given ? *(option + 1) : "/tmp/quillet-" + arguments.front() + ".png";
}

constexpr const char* moduleName = "libquillet-desktop.so";  // in the executable's run path

/// `reason` begins with the name of the library that dlopen missed.
void reportMissingModule(std::string_view reason) {
    const bool isModule = reason.starts_with(moduleName);
    const std::string message =
        isModule ? "is not installed" : std::string("can't be loaded: ").append(reason);
    std::fprintf(stderr, "quillet: the desktop half %s\n", message.c_str());
}

/// A function of the desktop half, which is loaded only here: other commands must run without Qt,
/// and start faster without it. Reports an error and returns null if there is no such function.
template <typename Operation>
Operation desktopOperation(const char* name) {
    void* const module = dlopen(moduleName, RTLD_NOW | RTLD_LOCAL);
    void* const operation = module ? dlsym(module, name) : nullptr;
    if (!operation) reportMissingModule(dlerror());
    return reinterpret_cast<Operation>(operation);
}

void drawPicture(const Arguments& arguments) {
    using Draw = void (*)(const char* command, const char* outPath);
    if (const auto draw = desktopOperation<Draw>("quilletPicture")) {
        draw(arguments.front().c_str(), outPath(arguments).c_str());
    }
}

void watch() {
    if (const auto run = desktopOperation<void (*)()>("quilletWatch")) run();
}

}  // namespace

int main(int argc, char** argv) {
    isolateProcess();
    const Arguments arguments(argv + std::min(argc, 1), argv + argc);
    const std::string command = arguments.empty() ? "watch" : arguments.front();

    if (command == "status") {
        CLI::status(std::ranges::find(arguments, "--json") != arguments.end());
    } else if (drawsPicture(command)) {
        drawPicture(arguments);
    } else if (command == "watch") {
        watch();
    } else if (command == "version" || command == "--version") {
        std::fputs(versionLine, stdout);
    } else {
        std::fputs(usage, stdout);
    }
    return 0;
}
