#pragma once

#include <optional>
#include <string>
#include <vector>

/// The application's own stored choices: one JSON object in ~/.config/quillet/defaults.json. A file
/// that somebody else changed is noticed at the next read. A write replaces it as a whole, so that
/// the old or the new one is there whenever the program ends. Keys of other programs or versions
/// are kept. What can't be written is kept until the program ends, or until a write succeeds. For
/// the main thread.
namespace UserDefaults {

/// Absent when the key is missing, not an array, or holds anything but texts.
std::optional<std::vector<std::string>> textArray(const std::string& key);
void setTextArray(const std::string& key, const std::vector<std::string>& texts);

/// Absent when the key is missing or not a text.
std::optional<std::string> text(const std::string& key);
void setText(const std::string& key, const std::string& text);

}  // namespace UserDefaults
