#include "Platform/HomeDirectory.h"

#include <pwd.h>
#include <unistd.h>

#include <cstdlib>
#include <mutex>
#include <utility>
#include <vector>

namespace {

std::mutex lock;
std::string replacement;  // guarded by lock

std::string passwordDatabaseHome() {
    std::vector<char> buffer(16384);
    passwd entry{};
    passwd* found = nullptr;
    getpwuid_r(getuid(), &entry, buffer.data(), buffer.size(), &found);
    return found && found->pw_dir && *found->pw_dir == '/' ? found->pw_dir : "/";
}

}  // namespace

std::string HomeDirectory::path() {
    {
        const std::lock_guard guard(lock);
        if (!replacement.empty()) return replacement;
    }
    const char* home = std::getenv("HOME");
    return home && *home == '/' ? home : passwordDatabaseHome();
}

std::string HomeDirectory::expanding(std::string_view path) {
    const bool startsAtHome = path == "~" || path.starts_with("~/");
    return startsAtHome ? HomeDirectory::path().append(path.substr(1)) : std::string(path);
}

std::string HomeDirectory::exchangeOverride(std::string path) {
    const std::lock_guard guard(lock);
    return std::exchange(replacement, std::move(path));
}
