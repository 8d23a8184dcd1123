#pragma once

#include <chrono>
#include <filesystem>
#include <fstream>
#include <optional>
#include <string>
#include <string_view>

#include "Platform/Clock.h"
#include "Platform/HomeDirectory.h"

/// A home directory that is empty when the object begins and gone when it ends. One place for the whole process,
/// because the program looks some paths up once.
class TemporaryHome {
public:
    TemporaryHome() : previous(HomeDirectory::exchangeOverride(path())) {
        std::filesystem::remove_all(path());
        std::filesystem::create_directories(path());
    }
    ~TemporaryHome() {
        HomeDirectory::exchangeOverride(previous);
        std::filesystem::remove_all(path());
    }
    TemporaryHome(const TemporaryHome&) = delete;

    static const std::string& path() {
        static std::string name = std::filesystem::temp_directory_path() / "quillet-test-XXXXXX";
        static const std::string made = mkdtemp(name.data());
        return made;
    }

    static std::string at(const std::string& relative) { return path() + "/" + relative; }

    /// Makes or replaces a file and the folders above it; gives its path.
    static std::string write(const std::string& relative, std::string_view text,
                             std::optional<Instant> modifiedAt = std::nullopt) {
        using namespace std::chrono;
        const std::filesystem::path file = at(relative);
        std::filesystem::create_directories(file.parent_path());
        std::ofstream(file, std::ios::binary) << text;
        if (modifiedAt) {
            const sys_time<nanoseconds> time(round<nanoseconds>(duration<double>(*modifiedAt)));
            std::filesystem::last_write_time(file, file_clock::from_sys(time));
        }
        return file;
    }

private:
    std::string previous;
};
