#pragma once

#include <fstream>
#include <nlohmann/json.hpp>
#include <optional>
#include <string>

/// The rows of one of the files in Tests/fixtures/tables: what goes in, then what must come out.
inline nlohmann::json table(const std::string& name) {
    return nlohmann::json::parse(std::ifstream(FIXTURES "/tables/" + name + ".json"));
}

/// A cell's text as a file holds it: a text as it is, any other value as JSON.
inline std::string cellText(const nlohmann::json& cell) {
    return cell.is_string() ? cell.get<std::string>() : cell.dump();
}

inline nlohmann::json orNull(const std::optional<std::string>& text) {
    return text ? nlohmann::json(*text) : nlohmann::json();
}
