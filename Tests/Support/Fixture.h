#pragma once

#include <fstream>
#include <nlohmann/json.hpp>
#include <string>

/// A file in Tests/fixtures: inputs and expected results.
inline nlohmann::json fixture(const std::string& name) {
    return nlohmann::json::parse(std::ifstream(FIXTURES "/" + name + ".json"));
}
