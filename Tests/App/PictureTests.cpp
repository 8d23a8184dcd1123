#include <gtest/gtest.h>

#include "Tests/Support/Fixture.h"
#include "Tests/Support/TemporaryHome.h"

/// Shell scripts in a home directory with nothing in it; each prints what it finds out, and never
/// an error.
class Pictures : public testing::TestWithParam<std::string> {};

INSTANTIATE_TEST_SUITE_P(, Pictures, testing::ValuesIn(scenarioNames({"pictures"})),
                         [](const auto& info) { return info.param; });

TEST_P(Pictures, ArePutWholeWhereTheyAreAskedForAndLookAlikeEverywhere) {
    const TemporaryHome home;
    auto tools = textOf(FIXTURES "/scenarios/pictures.sh");
    // The sanitizers' dlopen stands in the program's way to its own run path.
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
    if (!GetParam().ends_with("Module"))
        tools += "export LD_LIBRARY_PATH=$(dirname \"$QUILLET\")\n";
#endif
    const auto out = TemporaryHome::beside("out"), err = TemporaryHome::beside("err");
    for (const auto& step : scenario(GetParam())) {
        const auto script = TemporaryHome::write("script", tools + step["run"].get<std::string>());
        std::string command =
            "env -i HOME=\"$PWD\" PATH=\"$PATH\" QUILLET='" QUILLET "' timeout -k 1 60 sh '";
        command.append(script)
            .append("' </dev/null >'")
            .append(out)
            .append("' 2>'")
            .append(err)
            .append("'");
        TemporaryHome::shell(command);
        EXPECT_EQ(nlohmann::json(textOf(out)), step["out"]) << step["run"];
        EXPECT_EQ(textOf(err), "") << step["run"];
    }
}
