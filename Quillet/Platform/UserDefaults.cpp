#include "Platform/UserDefaults.h"

#include <algorithm>
#include <filesystem>
#include <nlohmann/json.hpp>

#include "Platform/HomeDirectory.h"
#include "Platform/RegularFile.h"
#include "Platform/WholeFile.h"

namespace fs = std::filesystem;
using nlohmann::json;

namespace {

/// Behind links, with which users keep their settings elsewhere.
fs::path filePath() {
    fs::path path = HomeDirectory::expanding("~/.config/quillet/defaults.json");
    std::error_code error;
    const auto type = fs::status(path, error).type();
    if (type == fs::file_type::regular) return fs::canonical(path, error);
    const bool isOpen = type == fs::file_type::not_found && fs::is_symlink(path, error);
    return isOpen ? path.parent_path() / fs::read_symlink(path, error) : path;
}

constexpr int maxDepth = 100;  // writing a value recurses as deep as it is nested

/// Discarded when the text isn't an object.
json parseObject(std::string_view text) {
    bool tooDeep = false;
    const auto limitDepth = [&](int depth, json::parse_event_t, json&) {
        return !(tooDeep |= depth > maxDepth);
    };
    json stored = json::parse(text, limitDepth, /*allow_exceptions=*/false);
    return stored.is_object() && !tooDeep ? stored : json(json::value_t::discarded);
}

/// The file's object, empty without a file, discarded when the file holds anything else.
json read() {
    const fs::path path = filePath();
    std::error_code ignored;
    if (!fs::exists(path, ignored)) return json::object();
    return parseObject(RegularFile::contents(path).value_or(""));
}

json unwritten = json::object();  // what could not be written yet

json value(const std::string& key) {
    if (unwritten.contains(key)) return unwritten[key];
    const json stored = read();
    return stored.is_object() ? stored.value(key, json()) : json();
}

/// Renames an unreadable file, which may have been written by hand, to the first free name.
bool setAside(const fs::path& path) {
    std::error_code error;
    std::string aside = path.string() + ".unreadable";
    for (int count = 2; fs::exists(fs::symlink_status(aside, error)); ++count)
        aside = path.string() + ".unreadable-" + std::to_string(count);
    fs::rename(path, aside, error);
    return !error;
}

void write(const std::string& key, json value) {
    const fs::path path = filePath();
    std::error_code ignored;
    fs::create_directories(path.parent_path(), ignored);
    unwritten[key] = std::move(value);
    json stored = read();
    if (stored.is_discarded() && !setAside(path)) return;
    if (stored.is_discarded()) stored = json::object();
    stored.update(unwritten);
    const std::string text = stored.dump(2, ' ', false, json::error_handler_t::replace) + "\n";
    if (WholeFile::write(path, text, WholeFile::Flush::yes)) unwritten = json::object();
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

void UserDefaults::removeUnfinished() {
    WholeFile::removeUnfinished(filePath());
}

void UserDefaults::setText(const std::string& key, const std::string& text) {
    write(key, text);
}
