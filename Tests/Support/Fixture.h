#pragma once

#include <fstream>
#include <nlohmann/json.hpp>
#include <optional>
#include <string>
#include <vector>

/// A file in Tests/fixtures: rows of inputs and expected results, or scenarios by name.
inline nlohmann::json fixture(const std::string& name) {
    return nlohmann::json::parse(std::ifstream(FIXTURES "/" + name + ".json"));
}

/// "file_Name" for each scenario in these files. A scenario is a list of steps to play in turn.
inline std::vector<std::string> scenarioNames(const std::vector<std::string>& files) {
    std::vector<std::string> names;
    for (const auto& file : files) {
        const auto scenarios = fixture("scenarios/" + file);
        for (const auto& [name, steps] : scenarios.items())
            names.push_back(std::string(file).append("_").append(name));
    }
    return names;
}

inline nlohmann::json scenario(const std::string& name) {
    const auto end = name.find('_');
    return fixture("scenarios/" + name.substr(0, end))[name.substr(end + 1)];
}

/// The text of a file or message: a string as it is, any other value as JSON.
inline std::string textIn(const nlohmann::json& value) {
    return value.is_string() ? value.get<std::string>() : value.dump();
}

inline nlohmann::json orNull(const std::optional<std::string>& text) {
    return text ? nlohmann::json(*text) : nlohmann::json();
}
