#pragma once

#include <optional>
#include <string>
#include <vector>

/// The application's stored choices: one JSON object in ~/.config/quillet/defaults.json, or where a
/// link of that name leads, read at each question and replaced as a whole by each write, unless it
/// is a link to or of another user. Unknown keys are kept. What can't be written is kept in memory
/// until a write succeeds. Main thread only.
namespace UserDefaults {

/// Absent when the key is missing or isn't an array of strings.
std::optional<std::vector<std::string>> textArray(const std::string& key);
void setTextArray(const std::string& key, const std::vector<std::string>& texts);

/// Absent when the key is missing or isn't a string.
std::optional<std::string> text(const std::string& key);
void setText(const std::string& key, const std::string& text);

/// Removes what may be left of a write when the program was killed. For the start.
void removeUnfinished();

}  // namespace UserDefaults
