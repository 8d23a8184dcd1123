#include "Platform/WholeFile.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <ctime>
#include <filesystem>
#include <optional>

namespace fs = std::filesystem;

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

/// Whether it is a link into /proc, such as /dev/stdout, which means an open file of some program.
bool isOpenFile(fs::path path) {
    std::error_code error;
    for (fs::path target; !(target = fs::read_symlink(path, error)).empty();) {
        path = path.parent_path() / target;
        if (fs::canonical(path.parent_path(), error).native().starts_with("/proc/")) return true;
    }
    return false;
}

/// Whether the path may be replaced: it is a regular file or nothing, or a link to either.
bool isReplaceable(const std::string& path) {
    std::error_code error;
    const auto type = fs::status(path, error).type();
    return (type == fs::file_type::regular || type == fs::file_type::not_found) &&
           !isOpenFile(path);
}

/// The permissions of the user's own file at the path, which the new one keeps.
std::optional<mode_t> ownPermissions(const std::string& path) {
    struct stat status {};
    const bool isOwn =
        lstat(path.c_str(), &status) == 0 && S_ISREG(status.st_mode) && status.st_uid == geteuid();
    return isOwn ? std::optional(status.st_mode & 0777) : std::nullopt;
}

/// In the same directory, as renaming is atomic only within a file system, and always the same, so
/// that a later write replaces what a killed program left. Names have at most 255 bytes.
std::string temporaryPath(const std::string& path) {
    const std::size_t name = path.rfind('/') + 1;
    return path.substr(0, name) + "." + path.substr(name, 240) + ".new";
}

/// Whether the temporary file is no other program's that is just writing it.
bool isOld(const std::string& path) {
    constexpr time_t maxWriteTime = 60;  // seconds
    struct stat status {};
    return lstat(path.c_str(), &status) == 0 && time(nullptr) - status.st_mtime > maxWriteTime;
}

/// Gives a file without a name one.
bool link(int file, const std::string& path) {
    const std::string open = "/proc/self/fd/" + std::to_string(file);
    unlink(path.c_str());
    return linkat(AT_FDCWD, open.c_str(), AT_FDCWD, path.c_str(), AT_SYMLINK_FOLLOW) == 0;
}

}  // namespace

bool WholeFile::write(const std::string& path, std::string_view bytes, Flush flush) {
    if (!isReplaceable(path)) return false;
    const auto mode = ownPermissions(path);
    const std::string temporary = temporaryPath(path),
                      directory = path.substr(0, path.rfind('/') + 1);
    constexpr int flags = O_WRONLY | O_CLOEXEC;
    constexpr mode_t permissions = 0666;  // less the umask
    int file = open(directory.empty() ? "." : directory.c_str(), O_TMPFILE | flags, permissions);
    const bool isNamed = file < 0;  // not every file system has files without names
    if (isNamed) {
        if (isOld(temporary)) unlink(temporary.c_str());
        file = open(temporary.c_str(), O_CREAT | O_EXCL | flags, permissions);
    }
    if (file < 0) return false;
    const bool written = writeAll(file, bytes) && (!mode || fchmod(file, *mode) == 0) &&
                         (flush == Flush::no || fsync(file) == 0) &&
                         (isNamed || link(file, temporary));
    const bool replaced =
        close(file) == 0 && written && rename(temporary.c_str(), path.c_str()) == 0;
    if (!replaced) unlink(temporary.c_str());
    return replaced;
}

void WholeFile::removeUnfinished(const std::string& path) {
    unlink(temporaryPath(path).c_str());
}
