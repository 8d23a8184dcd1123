#include <gtest/gtest.h>

#include "Providers/CodexProvider.h"
#include "Tests/Support/Table.h"
#include "Tests/Support/TemporaryHome.h"

namespace {
std::string text(const std::optional<CodexProvider::ModelEffort>& found) {
    return found ? found->model.value_or("-") + "|" + found->effort.value_or("-") : "nothing";
}

const std::string turn = R"({"type":"turn_context","payload":{"model":"o3"}})"
                         "\n";
}  // namespace

TEST(CodexModelEffort, TheNewestUsableTurnOfALogDecides) {
    for (const auto& row : table("codex-turns")) {
        std::string log;
        for (const auto& line : row[0])
            log += cellText(line) + "\n";
        EXPECT_EQ(text(CodexProvider::modelEffortInLog(log)), row[1]) << row;
    }
    EXPECT_EQ(text(CodexProvider::modelEffortInLog(turn + "[\"turn_context\"," + std::string(100'000, '['))),
              "o3|-");
}

TEST(CodexModelEffort, TheConfigurationCountsWhereTheNewestLogSaysNothing) {
    TemporaryHome home;
    auto steps = table("codex-steps");  // a file, its text, what is found from then on
    steps.push_back({"sessions/d.jsonl", turn + std::string(262144, '\n'), "a=b\" # c|-"});
    double time = 1000;
    for (const auto& step : steps) {
        home.write(".codex/" + step[0].get<std::string>(), step[1].get<std::string>(), ++time);
        EXPECT_EQ(text(CodexProvider::currentModelEffort()), step[2]) << step[0] << step[1];
    }
    home.write(".codex/sessions/d.jsonl", turn + "\xFF", ++time);
    EXPECT_EQ(text(CodexProvider::currentModelEffort()), "a=b\" # c|-") << "a log that is not UTF-8";
    home.write(".codex/config.toml", "model = 'x' \xFF");
    EXPECT_EQ(text(CodexProvider::currentModelEffort()), "-|-") << "nor the configuration";
}
