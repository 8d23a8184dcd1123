#pragma once

#include <sys/stat.h>
#include <unistd.h>

#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <nlohmann/json.hpp>
#include <optional>
#include <string>

#include "Platform/Clock.h"
#include "Platform/HomeDirectory.h"

inline std::string textOf(const std::string& file) {
    std::ifstream stream(file, std::ios::binary);
    return {std::istreambuf_iterator<char>(stream), {}};
}

/// A home directory that is empty when the object begins. One place for the whole process, because
/// the program looks some paths up once.
class TemporaryHome {
public:
    TemporaryHome() {
        HomeDirectory::exchangeOverride(path());
        std::filesystem::remove_all(path());
        std::filesystem::create_directories(path());
    }

    static std::string path() { return beside("home"); }
    static std::string at(const std::string& relative) { return path() + "/" + relative; }

    /// A place outside the home directory. It goes with the process, however that ends.
    static std::string beside(const std::string& name) {
        static const std::string parent = [] {
            std::string made = std::filesystem::temp_directory_path() / "quillet-test-XXXXXX";
            const std::string quoted = " '" + std::string(mkdtemp(made.data())) + "'";
            chmod(made.c_str(), 0755);
            setenv("PATH", (std::string(FIXTURES "/../Support:") + getenv("PATH")).c_str(), 1);
            [[maybe_unused]] FILE* const endsWithItsInput =
                popen(("cat; chmod -R u+rwX" + quoted + "; rm -rf" + quoted).c_str(), "we");
            return made;
        }();
        return parent + "/" + name;
    }

    /// Makes or replaces a file and the directories above it; gives its path.
    static std::string write(const std::string& relative, std::string_view text,
                             std::optional<Instant> modifiedAt = std::nullopt) {
        const std::filesystem::path file = at(relative);
        std::filesystem::create_directories(file.parent_path());
        std::ofstream(file, std::ios::binary) << text;
        using namespace std::chrono;
        const nanoseconds time(std::int64_t(modifiedAt.value_or(0) * 1e9));
        if (modifiedAt) last_write_time(file, file_clock::from_sys(sys_time<nanoseconds>(time)));
        return file;
    }

    /// The exit status of a shell's command with the home directory as the working directory.
    static int shell(const std::string& command) {
        return std::system(("cd '" + path() + "' && { " + command + "\n}").c_str());
    }

    /// A line for everything in the home directory, with all that a write of any kind would change.
    static std::string tree() {
        shell("find . -printf '%p %i %M %U %G %T@ %C@ %l\\n' | sort > ../tree");
        return textOf(beside("tree"));
    }
};
