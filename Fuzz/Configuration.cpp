#include <algorithm>
#include <cmath>
#include <nlohmann/json.hpp>

#include "Fuzz.h"
#include "Model/AppConfig.h"

namespace {

bool same(const AppConfig& a, const AppConfig& b) {
    return a.intervalSeconds == b.intervalSeconds &&
           std::ranges::equal(a.entries, b.entries, [](const auto& x, const auto& y) {
               return x.provider == y.provider && x.enabled == y.enabled;
           });
}

}  // namespace

void tryInput(std::string_view text) {
    const AppConfig config = AppConfig::decode(text);
    for (const Provider provider : Provider::allCases()) {
        require(std::ranges::any_of(config.entries,
                                    [&](const auto& entry) { return entry.provider == provider; }));
    }
    require(std::isfinite(config.intervalSeconds) && config.intervalSeconds >= 5);

    // The settings, written out in full, decode to the same settings.
    nlohmann::json document = {{"intervalSeconds", config.intervalSeconds},
                               {"providers", nlohmann::json::array()}};
    for (const auto& entry : config.entries) {
        document["providers"].push_back(
            {{"id", entry.provider.rawValue()}, {"enabled", entry.enabled}});
    }
    require(same(AppConfig::decode(document.dump()), config));

    const bool parses = nlohmann::json::accept(text);
    require(parses || same(config, AppConfig()));
}
