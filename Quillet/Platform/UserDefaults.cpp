#include "Platform/UserDefaults.h"

#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <filesystem>
#include <nlohmann/json.hpp>

#include "Platform/HomeDirectory.h"
#include "Platform/RegularFile.h"
#include "Platform/WholeFile.h"

namespace fs = std::filesystem;
using nlohmann::json;

namespace {

// The file is read at each question, and written by a recursion as deep as its values are nested.
constexpr std::size_t maxBytes = 1 << 20;
constexpr int maxLinesAndValues = 2000;

fs::path linkPath() {
    return HomeDirectory::expanding("~/.config/quillet/defaults.json");
}

/// Behind links, with which users keep their settings elsewhere.
fs::path filePath() {
    const fs::path path = linkPath();
    std::error_code error;
    const auto type = fs::status(path, error).type();
    if (type == fs::file_type::regular) return fs::canonical(path, error);
    const bool leadsNowhere = type == fs::file_type::not_found && fs::is_symlink(path, error);
    return leadsNowhere ? path.parent_path() / fs::read_symlink(path, error) : path;
}

/// Whether it is no link, or one of the user's own that leads to no file of another user.
bool mayBeReplaced(const fs::path& path) {
    struct stat link {};
    struct stat target {};
    if (lstat(path.c_str(), &link) != 0 || !S_ISLNK(link.st_mode)) return true;
    const bool leadsToFile = stat(path.c_str(), &target) == 0 && S_ISREG(target.st_mode);
    return link.st_uid == geteuid() && (!leadsToFile || target.st_uid == geteuid());
}

/// Discarded when the text isn't an object, or too large.
json parseObject(std::string_view text) {
    const auto adds = [](char c) { return c == ',' || c == '[' || c == '{' || c == '\n'; };
    if (text.size() > maxBytes || std::ranges::count_if(text, adds) > maxLinesAndValues)
        return json::value_t::discarded;
    json stored = json::parse(text, nullptr, /*allow_exceptions=*/false);
    return stored.is_object() ? stored : json(json::value_t::discarded);
}

/// The file's object, empty without a file, discarded when the file holds anything else.
json read() {
    const fs::path path = filePath();
    std::error_code ignored;
    if (!fs::exists(path, ignored)) return json::object();
    return parseObject(RegularFile::beginning(path, maxBytes + 1).value_or(""));
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
    if (!mayBeReplaced(linkPath())) return;
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
