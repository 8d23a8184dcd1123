#include "Platform/UserDefaults.h"

#include <sys/stat.h>

#include <algorithm>
#include <array>
#include <cstdint>
#include <filesystem>
#include <nlohmann/json.hpp>

#include "Platform/HomeDirectory.h"
#include "Platform/RegularFile.h"
#include "Platform/WholeFile.h"

using nlohmann::json;

namespace {

std::string filePath() {
    return HomeDirectory::expanding("~/.config/quillet/defaults.json");
}

// Deeper values than any of ours are not written by this program, and writing them again would
// recurse as deep.
constexpr int deepest = 100;

/// The text's object; a discarded value when it is anything else.
json object(std::string_view text) {
    bool tooDeep = false;
    const auto limitDepth = [&](int depth, json::parse_event_t, json&) {
        return !(tooDeep |= depth > deepest);
    };
    json stored = json::parse(text, limitDepth, /*allow_exceptions=*/false);
    return stored.is_object() && !tooDeep ? stored : json(json::value_t::discarded);
}

/// Differs whenever the file does.
using State = std::array<std::int64_t, 7>;

/// Of what is at the path; absent when nothing is there.
std::optional<State> state(const std::string& path) {
    struct stat status {};
    if (stat(path.c_str(), &status) != 0) return std::nullopt;
    return State{static_cast<std::int64_t>(status.st_dev),
                 static_cast<std::int64_t>(status.st_ino),
                 status.st_size,
                 status.st_mtim.tv_sec,
                 status.st_mtim.tv_nsec,
                 status.st_ctim.tv_sec,
                 status.st_ctim.tv_nsec};
}

/// The file's object, discarded when there is a file and it holds or is anything else. It is asked
/// for many times in one refresh, and read anew only when it has changed.
const json& read() {
    static std::optional<State> known;
    static json stored = json::object();
    const std::string path = filePath();
    const auto current = state(path);
    if (current == known) return stored;
    known = current;
    stored = current ? object(RegularFile::contents(path).value_or("")) : json::object();
    return stored;
}

/// What could not be written: it holds for as long as the program runs.
json& unwritten() {
    static json values = json::object();
    return values;
}

json value(const std::string& key) {
    if (unwritten().contains(key)) return unwritten()[key];
    const json& stored = read();
    return stored.is_object() ? stored.value(key, json()) : json();
}

/// Moves what somebody may still want out of the way, under the first name that is free; false if
/// that failed.
bool setAside(const std::filesystem::path& path) {
    std::error_code error;
    std::string aside = path.string() + ".unreadable";
    for (int count = 2; std::filesystem::exists(std::filesystem::symlink_status(aside, error));
         ++count) {
        aside = path.string() + ".unreadable-" + std::to_string(count);
    }
    std::filesystem::rename(path, aside, error);
    return !error;
}

void write(const std::string& key, json value) {
    const std::filesystem::path path = filePath();
    std::error_code ignored;
    std::filesystem::create_directories(path.parent_path(), ignored);
    unwritten()[key] = std::move(value);
    json stored = read();
    if (stored.is_discarded() && !setAside(path)) return;
    if (stored.is_discarded()) stored = json::object();
    stored.update(unwritten());
    const std::string text = stored.dump(2, ' ', false, json::error_handler_t::replace) + "\n";
    if (WholeFile::write(path, text, WholeFile::Flush::yes)) unwritten() = json::object();
}

}  // namespace

std::optional<std::vector<std::string>> UserDefaults::textArray(const std::string& key) {
    const json stored = value(key);
    if (!stored.is_array() || !std::ranges::all_of(stored, &json::is_string)) return std::nullopt;
    return stored.get<std::vector<std::string>>();
}

void UserDefaults::setTextArray(const std::string& key, const std::vector<std::string>& texts) {
    write(key, texts);
}

std::optional<std::string> UserDefaults::text(const std::string& key) {
    const json stored = value(key);
    return stored.is_string() ? std::optional(stored.get<std::string>()) : std::nullopt;
}

void UserDefaults::setText(const std::string& key, const std::string& text) {
    write(key, text);
}
