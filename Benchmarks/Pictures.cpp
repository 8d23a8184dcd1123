#include "Pictures.h"

#include <cstdio>
#include <cstdlib>

#include "Measure.h"
#include "Tests/Support/TemporaryHome.h"

void Pictures::command() {
    setenv("QT_LOGGING_RULES", "*=false", 1);  // Qt warns on machines without a session
    const std::string file = TemporaryHome::at("panel.png");
    const std::vector<std::string> panel = {QUILLET, "panel", "--out", file};
    const std::vector<std::string> empty = {EMPTY_PICTURE, TemporaryHome::at("empty.png"), "784",
                                            "808"};
    Measure::requireSame("the panel", Measure::run(panel), "wrote " + file + "\n");
    Measure::compare("peak memory of `quillet panel` : of an empty picture",
                     Measure::peakMemory(panel), Measure::peakMemory(empty), "MiB", 2);
    Measure::compare(
        "`quillet panel`, four providers : an empty picture", 50, [&] { Measure::run(panel); },
        [&] { Measure::run(empty); }, 1.5);
}

void Pictures::refresh(bool verbose) {
    const std::string output = Measure::run({DRAWING});
    char* rest = nullptr;
    const double first = std::strtod(output.c_str(), &rest);
    const double steady = std::strtod(rest, &rest);
    Measure::compare("all that a refresh draws, four providers, limit 8 ms", steady, 8, "ms ", 1);
    if (verbose) std::printf("%-32s %8.3f ms%s", "the first time", first, rest);
}
