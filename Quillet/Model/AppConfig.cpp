#include "Model/AppConfig.h"

#include <algorithm>
#include <optional>

#include "Platform/HomeDirectory.h"
#include "Platform/RegularFile.h"
#include "Support/JSON.h"
#include "Support/Text.h"

namespace {

constexpr double shortestInterval = 5;  // seconds

std::optional<Provider> providerNamed(const std::string& id) {
    if (const auto exact = Provider::fromRawValue(id)) return exact;
    for (const Provider provider : Provider::allCases()) {
        if (Text::lowercased(id) == Text::lowercased(provider.rawValue())) return provider;
    }
    return std::nullopt;
}

std::vector<AppConfig::Entry> namedEntries(const std::vector<JSONObject>& providers) {
    std::vector<AppConfig::Entry> entries;
    for (const JSONObject& object : providers) {
        const auto id = object.text("id");
        const auto provider = id ? providerNamed(*id) : std::nullopt;
        if (provider) entries.push_back({*provider, object.flag("enabled").value_or(true)});
    }
    return entries;
}

void appendMissing(std::vector<AppConfig::Entry>& entries) {
    for (const Provider provider : Provider::allCases()) {
        const auto isNamed = [&](const AppConfig::Entry& entry) {
            return entry.provider == provider;
        };
        if (std::ranges::none_of(entries, isNamed)) entries.push_back({provider, true});
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
    if (interval && *interval >= shortestInterval) config.intervalSeconds = *interval;
    if (const auto providers = object->objects("providers")) {
        config.entries = namedEntries(*providers);
        appendMissing(config.entries);
    }
    return config;
}

const std::string& AppConfig::path() {
    static const std::string path = HomeDirectory::expanding("~/.config/quillet/config.json");
    return path;
}
