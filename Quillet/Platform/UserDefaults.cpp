#include "Platform/UserDefaults.h"

#include <algorithm>
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

// Deeper values than any of ours are not written by this program, and writing them again would recurse as deep.
constexpr int deepest = 100;

/// The file's object; a discarded value when there is a file and it holds or is anything else.
json read() {
    std::error_code ignored;
    const auto text = RegularFile::contents(filePath());
    if (!text && !std::filesystem::exists(filePath(), ignored)) return json::object();
    bool tooDeep = false;
    const auto limitDepth = [&](int depth, json::parse_event_t, json&) { return !(tooDeep |= depth > deepest); };
    json stored = json::parse(text.value_or(""), limitDepth, /*allow_exceptions=*/false);
    return stored.is_object() && !tooDeep ? stored : json(json::value_t::discarded);
}

/// What could not be written: it holds for as long as the program runs.
json& unwritten() {
    static json values = json::object();
    return values;
}

json value(const std::string& key) {
    if (unwritten().contains(key)) return unwritten()[key];
    const json stored = read();
    return stored.is_object() ? stored.value(key, json()) : json();
}

/// Moves what somebody may still want out of the way, under the first name that is free; false if that failed.
bool setAside(const std::filesystem::path& path) {
    std::error_code error;
    std::string aside = path.string() + ".unreadable";
    for (int count = 2; std::filesystem::exists(std::filesystem::symlink_status(aside, error)); ++count) {
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
