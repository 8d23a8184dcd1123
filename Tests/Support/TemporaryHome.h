#pragma once

#include <sys/stat.h>
#include <unistd.h>

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

/// A home directory that is empty when the object begins and gone when it ends. One place for the
/// whole process, because the program looks some paths up once.
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

    static std::string path() { return beside("home"); }
    static std::string at(const std::string& relative) { return path() + "/" + relative; }

    /// A place outside the home directory. It goes with the process, however that ends.
    static std::string beside(const std::string& name) {
        static const std::string parent = [] {
            std::string made = std::filesystem::temp_directory_path() / "quillet-test-XXXXXX";
            const std::string quoted = " '" + std::string(mkdtemp(made.data())) + "'";
            chmod(made.c_str(), 0755);
            const auto programs = std::filesystem::path(__FILE__).parent_path().string();
            setenv("PATH", (programs + ":" + getenv("PATH")).c_str(), 1);
            [[maybe_unused]] FILE* const endsWithItsInput =
                popen(("cat; chmod -R u+rwX" + quoted + "; rm -rf" + quoted).c_str(), "we");
            return made;
        }();
        return parent + "/" + name;
    }

    /// Makes or replaces a file and the directories above it; gives its path.
    static std::string write(const std::string& relative, std::string_view text,
                             std::optional<Instant> modifiedAt = std::nullopt) {
        using namespace std::chrono;
        const std::filesystem::path file = at(relative);
        std::filesystem::create_directories(file.parent_path());
        std::ofstream(file, std::ios::binary) << text;
        const sys_time<nanoseconds> time(
            round<nanoseconds>(duration<double>(modifiedAt.value_or(0))));
        if (modifiedAt) std::filesystem::last_write_time(file, file_clock::from_sys(time));
        return file;
    }

    /// The exit status of a shell's command with the home directory as the working directory.
    static int shell(const std::string& command) {
        return std::system(("cd '" + path() + "' && { " + command + "\n}").c_str());
    }

    /// The home directory and everything in it with all that a write of any kind would change.
    static nlohmann::json tree() {
        nlohmann::json all;
        const auto add = [&all](const std::string& file) {
            struct stat is {};
            lstat(file.c_str(), &is);
            all[file] = {
                {"inode", is.st_ino},
                {"mode", is.st_mode},
                {"owner", {is.st_uid, is.st_gid}},
                {"mtime", {is.st_mtime, is.st_mtim.tv_nsec}},
                {"ctime", {is.st_ctime, is.st_ctim.tv_nsec}},
                {"content", S_ISREG(is.st_mode) ? std::hash<std::string>()(textOf(file)) : 0}};
        };
        add(path());
        for (const auto& entry : std::filesystem::recursive_directory_iterator(path()))
            add(entry.path());
        return all;
    }

private:
    std::string previous;
};
