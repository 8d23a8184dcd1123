#include "Platform/WholeFile.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstdlib>

namespace {

bool writeAll(int file, std::string_view bytes) {
    while (!bytes.empty()) {
        const auto count = write(file, bytes.data(), bytes.size());
        if (count < 0 && errno == EINTR) continue;
        if (count < 0) return false;
        bytes.remove_prefix(static_cast<std::size_t>(count));
    }
    return true;
}

/// mkstemp makes files for their owner alone; this is what a file made in the usual way would get.
mode_t usualMode() {
    const mode_t mask = umask(0);
    umask(mask);
    return 0666 & ~mask;
}

}  // namespace

bool WholeFile::write(const std::string& path, std::string_view bytes, Flush flush) {
    // In the same folder, so that the rename is one step, and with a name short enough beside the longest.
    std::string temporary = path.substr(0, path.rfind('/') + 1) + ".quillet-XXXXXX";
    const int file = mkostemp(temporary.data(), O_CLOEXEC);
    if (file < 0) return false;
    const bool written =
        writeAll(file, bytes) && fchmod(file, usualMode()) == 0 && (flush == Flush::no || fsync(file) == 0);
    const bool replaced = close(file) == 0 && written && rename(temporary.c_str(), path.c_str()) == 0;
    if (!replaced) unlink(temporary.c_str());
    return replaced;
}
