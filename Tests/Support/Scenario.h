#pragma once

#include <gtest/gtest.h>

#include <fstream>
#include <nlohmann/json.hpp>
#include <string>
#include <vector>

/// A list of steps to play in turn, from one of the files in Tests/fixtures/scenarios.
struct Scenario {
    std::string name;
    nlohmann::json steps;

    static std::vector<Scenario> load(const std::string& file) {
        std::vector<Scenario> all;
        const auto scenarios = nlohmann::json::parse(std::ifstream(FIXTURES "/scenarios/" + file));
        for (const auto& [name, steps] : scenarios.items())
            all.push_back({name, steps});
        return all;
    }
    static std::string nameOf(const testing::TestParamInfo<Scenario>& info) { return info.param.name; }
};

inline void PrintTo(const Scenario& scenario, std::ostream* out) {
    *out << scenario.name;
}
