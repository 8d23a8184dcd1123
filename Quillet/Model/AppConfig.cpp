#include "Model/AppConfig.h"

#include <algorithm>
#include <optional>

#include "Platform/HomeDirectory.h"
#include "Platform/RegularFile.h"
#include "Support/JSON.h"
#include "Support/Text.h"

namespace {

constexpr double minInterval = 5;  // seconds

std::optional<Provider> providerNamed(const std::string& id) {
    if (const auto exact = Provider::fromRawValue(id)) return exact;
    for (const Provider provider : Provider::allCases()) {
        if (Text::lowercased(id) == Text::lowercased(provider.rawValue())) return provider;
    }
    return std::nullopt;
}

void appendMissing(std::vector<AppConfig::Entry>& entries) {
    for (const Provider provider : Provider::allCases()) {
        if (std::ranges::find(entries, provider, &AppConfig::Entry::provider) == entries.end())
            entries.push_back({provider, true});
    }
}

}  // namespace

AppConfig::AppConfig() {
    appendMissing(entries);
}

AppConfig AppConfig::load() {
    const auto text = RegularFile::contents(path());
    return text ? decode(*text) : AppConfig();
}

AppConfig AppConfig::decode(std::string_view text) {
    AppConfig config;
    const auto object = JSONObject::parse(text);
    if (!object) return config;

    const auto interval = object->number("intervalSeconds");
    if (interval && *interval >= minInterval) config.intervalSeconds = *interval;
    if (const auto providers = object->objects("providers")) {
        config.entries.clear();
        for (const JSONObject& entry : *providers) {
            const auto provider = providerNamed(entry.text("id").value_or(""));
            if (provider)
                config.entries.push_back({*provider, entry.flag("enabled").value_or(true)});
        }
        appendMissing(config.entries);
    }
    return config;
}

const std::string& AppConfig::path() {
    static const std::string path = HomeDirectory::expanding("~/.config/quillet/config.json");
    return path;
}
