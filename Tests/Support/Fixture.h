#pragma once

#include <fstream>
#include <nlohmann/json.hpp>
#include <string>

/// A file in Tests/fixtures: inputs and expected results.
inline nlohmann::json fixture(const std::string& name) {
    return nlohmann::json::parse(std::ifstream(FIXTURES "/" + name + ".json"));
}

/// The text of a file or message: a string as it is, any other value as JSON.
inline std::string textIn(const nlohmann::json& value) {
    return value.is_string() ? value.get<std::string>() : value.dump();
}
