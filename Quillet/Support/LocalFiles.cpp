// Session directories may hold hundreds of thousands of logs, so a file is only examined when its
// name matches.
#include "Support/LocalFiles.h"

#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <memory>
#include <utility>
#include <vector>

#include <utf8.h>

#include "Platform/HomeDirectory.h"
#include "Platform/RegularFile.h"

namespace {

using Directory = std::unique_ptr<DIR, decltype([](DIR* directory) { closedir(directory); })>;

Directory openDirectory(const std::string& path, int flags) {
    const int descriptor =
        open(path.c_str(), O_RDONLY | O_DIRECTORY | O_NONBLOCK | O_CLOEXEC | flags);
    Directory directory(descriptor < 0 ? nullptr : fdopendir(descriptor));
    if (!directory && descriptor >= 0) close(descriptor);
    return directory;
}

bool isSkipped(const char* name, LocalFiles::Hidden hidden) {
    const std::string_view text(name);
    return text == "." || text == ".." ||
           (hidden == LocalFiles::Hidden::skip && text.starts_with('.'));
}

Instant modificationTime(const struct stat& status) {
    return static_cast<Instant>(status.st_mtim.tv_sec) +
           static_cast<Instant>(status.st_mtim.tv_nsec) * 1e-9;
}

bool isASCII(char c) {
    return static_cast<unsigned char>(c) < 0x80;
}

/// The first byte from `at` on that isn't ASCII. Logs are nearly all ASCII, so eight bytes are
/// checked at a time.
const char* skipASCII(const char* at, const char* end) {
    constexpr std::uint64_t highBits = 0x8080808080808080;
    for (std::uint64_t word; end - at >= 8; at += 8) {
        std::memcpy(&word, at, sizeof word);
        if (word & highBits) break;
    }
    return std::find_if_not(at, end, isASCII);
}

bool isUTF8(const std::string& text) {
    const char* const end = text.data() + text.size();
    for (const char* at = skipASCII(text.data(), end); at != end; at = skipASCII(at, end)) {
        const char* const start = std::exchange(at, std::find_if(at, end, isASCII));
        if (!utf8::is_valid(start, at)) return false;
    }
    return true;
}

std::optional<std::string> ifUTF8(std::optional<std::string> bytes) {
    return bytes && isUTF8(*bytes) ? std::move(bytes) : std::nullopt;
}

}  // namespace

void LocalFiles::forEachFile(
    const std::string& directory, Hidden hidden,
    const std::function<bool(std::string_view)>& matches,
    const std::function<void(const std::string&, const char*, Instant)>& visit) {
    // Paths, as open directories would take a descriptor each in a deep tree.
    std::vector<std::string> pending{directory};
    int linkFlag = 0;  // the top itself may be a link
    while (!pending.empty()) {
        const std::string path = std::move(pending.back());
        pending.pop_back();
        // A directory may have become a link since its name was read.
        const Directory opened = openDirectory(path, std::exchange(linkFlag, O_NOFOLLOW));
        if (!opened) continue;

        while (const dirent* entry = readdir(opened.get())) {
            if (isSkipped(entry->d_name, hidden)) continue;
            const bool matching = entry->d_type != DT_DIR && matches(entry->d_name);
            struct stat status {};
            const bool needsStatus =
                entry->d_type == DT_UNKNOWN || (entry->d_type == DT_REG && matching);
            if (needsStatus &&
                fstatat(dirfd(opened.get()), entry->d_name, &status, AT_SYMLINK_NOFOLLOW) != 0)
                continue;

            if (entry->d_type == DT_DIR || S_ISDIR(status.st_mode)) {
                pending.push_back(path + '/' + entry->d_name);
            } else if (matching && S_ISREG(status.st_mode)) {
                visit(path, entry->d_name, modificationTime(status));
            }
        }
    }
}

std::optional<std::string> LocalFiles::newestFile(std::string_view under, std::string_view suffix) {
    std::optional<std::string> newest;
    Instant newestTime = 0;
    forEachFile(
        HomeDirectory::expanding(under), Hidden::skip,
        [&](std::string_view name) { return name.ends_with(suffix); },
        [&](const std::string& directory, const char* name, Instant modifiedAt) {
            if (newest && modifiedAt <= newestTime) return;
            newest = directory + '/' + name;
            newestTime = modifiedAt;
        });
    return newest;
}

std::optional<std::string> LocalFiles::tail(const std::string& of, std::size_t maxBytes) {
    return ifUTF8(RegularFile::ending(of, maxBytes));
}

std::optional<std::string> LocalFiles::text(const std::string& of) {
    return ifUTF8(RegularFile::contents(of));
}

bool LocalFiles::exists(const std::string& path) {
    struct stat status {};
    return stat(path.c_str(), &status) == 0;
}
