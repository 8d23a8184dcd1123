#include "Platform/WholeFile.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <optional>

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

/// The replaced file's permissions, or 0644 for a new file. Absent if the path is something else,
/// such as a device.
std::optional<mode_t> permissions(const std::string& path) {
    struct stat status {};
    if (lstat(path.c_str(), &status) != 0) return 0644;
    if (S_ISREG(status.st_mode)) return status.st_mode & 0777;
    return S_ISLNK(status.st_mode) ? std::optional<mode_t>(0644) : std::nullopt;
}

}  // namespace

bool WholeFile::write(const std::string& path, std::string_view bytes, Flush flush) {
    const auto mode = permissions(path);
    if (!mode) return false;
    // In the same directory, as renaming is atomic only within a file system. The file's own name
    // may have the maximum length already, so the temporary name doesn't contain it.
    std::string temporary = path.substr(0, path.rfind('/') + 1) + ".quillet-XXXXXX";
    const int file = mkostemp(temporary.data(), O_CLOEXEC);
    if (file < 0) return false;
    const bool written = writeAll(file, bytes) && fchmod(file, *mode) == 0 &&
                         (flush == Flush::no || fsync(file) == 0);
    const bool replaced =
        close(file) == 0 && written && rename(temporary.c_str(), path.c_str()) == 0;
    if (!replaced) unlink(temporary.c_str());
    return replaced;
}
