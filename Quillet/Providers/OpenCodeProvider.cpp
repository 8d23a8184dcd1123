// OpenCode reports no allowance, so the percentage is of a fixed token budget for five hours. Its
// tool may write to the database at the same time.
#include "Providers/OpenCodeProvider.h"

#include <sqlite3.h>

#include <algorithm>
#include <chrono>
#include <filesystem>
#include <memory>

#include "Platform/HomeDirectory.h"
#include "Support/LocalFiles.h"
#include "Support/Text.h"

namespace {

constexpr const char* dataDirectory = "~/.local/share/opencode";
constexpr double windowLength = 18000;      // seconds
constexpr double windowBudget = 3'000'000;  // tokens
constexpr double maxPercent = 100;
constexpr std::chrono::seconds queryTimeout(3);  // the database may be huge, or an endless view
constexpr int stepsPerCheck = 100'000;           // of SQLite's virtual machine

constexpr const char* tokenSum =
    "SELECT COALESCE(SUM(\n"
    "    COALESCE(json_extract(data, '$.tokens.input'), 0) +\n"
    "    COALESCE(json_extract(data, '$.tokens.output'), 0) +\n"
    "    COALESCE(json_extract(data, '$.tokens.reasoning'), 0)\n"
    "), 0)\n"
    "FROM message\n"
    "WHERE time_created >= ?1 AND json_extract(data, '$.tokens') IS NOT NULL";

using Database =
    std::unique_ptr<sqlite3, decltype([](sqlite3* database) { sqlite3_close_v2(database); })>;
using Statement =
    std::unique_ptr<sqlite3_stmt, decltype([](sqlite3_stmt* s) { sqlite3_finalize(s); })>;

Database open(const std::string& path, const char* mode) {
    std::string escaped = Text::replacing(path, "%", "%25");
    escaped = Text::replacing(Text::replacing(escaped, "?", "%3f"), "#", "%23");
    const std::string uri = "file://" + escaped + "?" + mode;

    sqlite3* handle = nullptr;
    const int flags = SQLITE_OPEN_READONLY | SQLITE_OPEN_NOMUTEX | SQLITE_OPEN_URI;
    const int code = sqlite3_open_v2(uri.c_str(), &handle, flags, nullptr);
    Database database(handle);
    return code == SQLITE_OK ? std::move(database) : nullptr;
}

/// Whether bytes 18 and 19 of the database's header, the file format's versions, say that it has a
/// write-ahead log. Read through SQLite's descriptor: closing one of ours would drop the locks that
/// another thread holds through SQLite.
bool usesWriteAheadLog(sqlite3* database) {
    sqlite3_file* file = nullptr;
    sqlite3_file_control(database, "main", SQLITE_FCNTL_FILE_POINTER, static_cast<void*>(&file));
    char versions[2];
    const bool read =
        file && file->pMethods && file->pMethods->xRead(file, versions, 2, 18) == SQLITE_OK;
    return read && versions[0] == 2 && versions[1] == 2;
}

struct Companion {
    bool exists;
    bool usable;  // absent or a regular file; opening a FIFO could wait forever
    bool empty;
};

Companion companion(const std::string& path) {
    std::error_code error;
    const auto status = std::filesystem::status(path, error);
    const bool exists = std::filesystem::exists(status);
    const bool regular = std::filesystem::is_regular_file(status);
    return {exists, !exists || regular, !regular || std::filesystem::file_size(path, error) == 0};
}

int hasPassed(void* deadline) {
    return std::chrono::steady_clock::now() >=
           *static_cast<std::chrono::steady_clock::time_point*>(deadline);
}

/// Even a read-only connection creates a write-ahead log or index that is missing, and writes read
/// marks into the index. So the index is opened read-only, and a database whose log is missing, or
/// empty and not in use, is read without one.
Database openForReading(const std::string& path) {
    const Companion database = companion(path);
    const Companion log = companion(path + "-wal");
    const Companion index = companion(path + "-shm");
    const Companion journal = companion(path + "-journal");
    if (!database.exists || !database.usable || !log.usable || !index.usable || !journal.usable)
        return nullptr;

    Database connection = open(path, "readonly_shm=1");
    const bool complete = !log.exists || (log.empty && !index.exists);
    const bool standsAlone = connection && complete && usesWriteAheadLog(connection.get());
    return standsAlone ? open(path, "immutable=1") : std::move(connection);
}

}  // namespace

std::optional<std::int64_t> OpenCodeProvider::tokensInLastFiveHours(const std::string& dbPath) {
    const Database database = openForReading(dbPath);
    if (!database) return std::nullopt;
    auto deadline = std::chrono::steady_clock::now() + queryTimeout;
    sqlite3_progress_handler(database.get(), stepsPerCheck, hasPassed, &deadline);

    sqlite3_stmt* prepared = nullptr;
    sqlite3_prepare_v2(database.get(), tokenSum, -1, &prepared, nullptr);
    const Statement statement(prepared);
    if (!statement) return std::nullopt;

    const auto cutOff =
        static_cast<std::int64_t>((Clock::now() - windowLength) * 1000);  // milliseconds
    sqlite3_bind_int64(statement.get(), 1, cutOff);
    if (sqlite3_step(statement.get()) != SQLITE_ROW) return std::nullopt;
    return sqlite3_column_int64(statement.get(), 0);
}

UsageSnapshot OpenCodeProvider::collect() const {
    UsageSnapshot snapshot(Provider::opencode);
    const std::string dir = HomeDirectory::expanding(dataDirectory);
    if (!LocalFiles::exists(dir)) {
        snapshot.error = UsageSnapshot::notInstalled;
        return snapshot;
    }
    if (!LocalFiles::exists(dir + "/auth.json")) {
        snapshot.error = UsageSnapshot::loginRequired;
        return snapshot;
    }
    snapshot.connected = true;
    const auto tokens = tokensInLastFiveHours(dir + "/opencode.db");
    if (tokens && *tokens >= 1) {
        snapshot.dailyPercent =
            std::min(static_cast<double>(*tokens) / windowBudget * 100, maxPercent);
    }
    return snapshot;
}
