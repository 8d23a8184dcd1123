#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "Model/Provider.h"

/// The user's configuration file, which is never written. Whatever is wrong in it falls back to the
/// defaults.
struct AppConfig {
    struct Entry {
        Provider provider;
        bool enabled;
    };

    /// In the file's order, then the providers that it doesn't name. An id given twice stays twice.
    std::vector<Entry> entries;
    double intervalSeconds = 20;  ///< Between two refreshes of the application; at least 5.

    AppConfig();

    static AppConfig load();
    static AppConfig decode(std::string_view text);

    /// Looked up once in the life of the process.
    static const std::string& path();
};
