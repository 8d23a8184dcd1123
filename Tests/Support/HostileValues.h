#pragma once

#include <chrono>
#include <cmath>

#include "Model/UsageSnapshot.h"

/// Draws snapshots that no collector should make. Each must take at most 100 milliseconds, or two
/// seconds under a sanitizer.
template <class Draw>
void expectHostileValuesDrawnAtOnce(Draw draw) {
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
    const std::chrono::milliseconds limit(2000);
#else
    const std::chrono::milliseconds limit(100);
#endif
    const std::string words[] = {"",
                                 "two\nlines\r\u2028\t",
                                 "שלום \u202E مرحبا",
                                 "Z\u0300\u0301\u0302\u0303\u0304\u0305\u0306",
                                 "👩‍👩‍👧‍👦🏳️‍🌈",
                                 "\xFF\xC3\xED\xA0\x80",
                                 std::string(1, '\0'),
                                 std::string(10'000, 'W')};
    for (const auto& word : words) {
        for (const double number :
             {double(NAN), double(INFINITY), -double(INFINITY), -5.0, 1e300}) {
            UsageSnapshot figures(Provider::codex), texts(Provider::codex);
            figures.dailyPercent = figures.weeklyPercent = figures.dailyResetAt =
                figures.weeklyResetAt = number;
            figures.modelLabel = texts.planLabel = texts.error = word;
            figures.connected = texts.connected = true;
            auto shortest = std::chrono::nanoseconds::max();
            // The machine may be busy with something else.
            for (int i = 0; i < 3 && shortest > limit; ++i) {
                const auto begin = std::chrono::steady_clock::now();
                draw(figures), draw(texts);
                shortest = std::min<std::chrono::nanoseconds>(
                    shortest, std::chrono::steady_clock::now() - begin);
            }
            EXPECT_LT(shortest, limit) << word.substr(0, 99) << number;
        }
    }
}
