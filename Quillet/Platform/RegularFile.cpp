#include "Platform/RegularFile.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <utility>

namespace {

/// A file opened for reading.
struct Descriptor {
    /// Without O_NONBLOCK, opening a FIFO waits for a writer.
    explicit Descriptor(const std::string& path)
        : number(open(path.c_str(), O_RDONLY | O_NONBLOCK | O_NOCTTY | O_CLOEXEC)) {}
    ~Descriptor() {
        if (number >= 0) close(number);
    }
    Descriptor(const Descriptor&) = delete;
    Descriptor& operator=(const Descriptor&) = delete;

    const int number;
};

/// In bytes; absent if the file isn't a regular one.
std::optional<std::size_t> regularSize(const Descriptor& file) {
    struct stat status {};
    if (file.number < 0 || fstat(file.number, &status) != 0 || !S_ISREG(status.st_mode))
        return std::nullopt;
    return static_cast<std::size_t>(status.st_size);
}

/// At most `maxBytes` from `offset` on. The file may have shrunk since its size was read.
std::optional<std::string> readFrom(const Descriptor& file, std::size_t offset,
                                    std::size_t maxBytes) {
    std::string bytes(maxBytes, '\0');
    std::size_t filled = 0;
    while (filled < maxBytes) {
        const auto count = pread(file.number, bytes.data() + filled, maxBytes - filled,
                                 static_cast<off_t>(offset + filled));
        if (count < 0 && errno == EINTR) continue;
        if (count < 0) return std::nullopt;
        if (count == 0) break;
        filled += static_cast<std::size_t>(count);
    }
    bytes.resize(filled);
    return bytes;
}

}  // namespace

std::optional<std::string> RegularFile::contents(const std::string& path) {
    auto bytes = beginning(path, maxFileBytes + 1);
    return bytes && bytes->size() <= maxFileBytes ? std::move(bytes) : std::nullopt;
}

std::optional<std::string> RegularFile::beginning(const std::string& path, std::size_t maxBytes) {
    const Descriptor file(path);
    const auto size = regularSize(file);
    return size ? readFrom(file, 0, std::min(*size, maxBytes)) : std::nullopt;
}

std::optional<std::string> RegularFile::ending(const std::string& path, std::size_t maxBytes) {
    const Descriptor file(path);
    const auto size = regularSize(file);
    if (!size) return std::nullopt;
    const std::size_t length = std::min(*size, maxBytes);
    return readFrom(file, *size - length, length);
}
