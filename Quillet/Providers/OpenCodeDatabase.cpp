// Anybody may have made the database, and OpenCode's own tool may write to it at any time. So it is
// read as SQLite advises for untrusted files, without its locks and without the index that it maps
// into memory: another program could truncate that. Whether what was read is of one moment is seen
// from the files afterwards.
#include <sqlite3.h>
#include <sys/stat.h>

#include <chrono>
#include <filesystem>
#include <memory>
#include <string_view>
#include <utility>

#include "Platform/RegularFile.h"
#include "Providers/OpenCodeProvider.h"
#include "Support/Text.h"

namespace {

using Monotonic = std::chrono::steady_clock;

constexpr double windowLength = 18000;           // seconds
constexpr std::chrono::seconds timeout(3);       // for all attempts together
constexpr int stepsPerCheck = 100;               // of SQLite's virtual machine, for some five rows
constexpr int maxAttempts = 5;                   // while the tool moves its log into the database
constexpr std::int64_t maxHeapBytes = 48 << 20;  // of all of SQLite
constexpr int maxRowBytes = 8 << 20;  // messages may contain whole files; the heap must hold it
constexpr std::uintmax_t maxLogBytes = 256 << 20;  // which SQLite reads without a pause

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

// SQLite's files without locks.
sqlite3_vfs* lockless() {
    return sqlite3_vfs_find("unix-none");
}

/// SQLite opens a log for writing, and gives it the database's owner if run by root. It knows no
/// such rule for this type.
int openReadOnly(sqlite3_vfs*, const char* path, sqlite3_file* file, int flags, int* outFlags) {
    file->pMethods = nullptr;
    struct stat status {};
    if (!path || stat(path, &status) != 0 || !S_ISREG(status.st_mode)) return SQLITE_CANTOPEN;
    const int type = flags & SQLITE_OPEN_MAIN_DB ? SQLITE_OPEN_MAIN_DB : SQLITE_OPEN_SUPER_JOURNAL;
    return lockless()->xOpen(lockless(), path, file, SQLITE_OPEN_READONLY | type, outFlags);
}

/// Registers the files that SQLite can only read, and limits its memory. Their name, null if there
/// are none.
const char* readOnlyFiles() {
    static sqlite3_vfs files{};
    static const char* const name = [] {
        sqlite3_hard_heap_limit64(maxHeapBytes);
        if (!lockless()) return static_cast<const char*>(nullptr);
        files = *lockless();
        files.zName = "read-only";
        files.xOpen = openReadOnly;
        // A connection would delete the log beside an empty database.
        files.xDelete = [](sqlite3_vfs*, const char*, int) { return SQLITE_READONLY; };
        return sqlite3_vfs_register(&files, 0) == SQLITE_OK ? files.zName : nullptr;
    }();
    return name;
}

Database open(const std::string& path, const char* mode) {
    std::string escaped = Text::replacing(path, "%", "%25");
    escaped = Text::replacing(Text::replacing(escaped, "?", "%3f"), "#", "%23");
    const std::string uri = "file://" + escaped + mode;

    sqlite3* handle = nullptr;
    const char* const files = readOnlyFiles();
    const int flags = SQLITE_OPEN_READONLY | SQLITE_OPEN_NOMUTEX | SQLITE_OPEN_URI;
    const int code = files ? sqlite3_open_v2(uri.c_str(), &handle, flags, files) : SQLITE_ERROR;
    Database database(handle);
    return code == SQLITE_OK ? std::move(database) : nullptr;
}

bool is(const char* name, const char* text) {
    return name && sqlite3_stricmp(name, text) == 0;
}

/// Allows what the sum needs.
int authorize(void*, int action, const char* first, const char* second, const char*, const char*) {
    const bool allowed =
        action == SQLITE_SELECT || (action == SQLITE_READ && is(first, "message")) ||
        (action == SQLITE_FUNCTION &&
         (is(second, "coalesce") || is(second, "sum") || is(second, "json_extract")));
    return allowed ? SQLITE_OK : SQLITE_DENY;
}

int hasPassed(void* deadline) {
    return Monotonic::now() >= *static_cast<const Monotonic::time_point*>(deadline);
}

void distrust(sqlite3* database, Monotonic::time_point* deadline) {
    sqlite3_progress_handler(database, stepsPerCheck, hasPassed, deadline);
    sqlite3_limit(database, SQLITE_LIMIT_LENGTH, maxRowBytes);
    sqlite3_drop_modules(database, nullptr);
    sqlite3_db_config(database, SQLITE_DBCONFIG_DEFENSIVE, 1, nullptr);
    sqlite3_db_config(database, SQLITE_DBCONFIG_TRUSTED_SCHEMA, 0, nullptr);
    sqlite3_db_config(database, SQLITE_DBCONFIG_ENABLE_VIEW, 0, nullptr);
    sqlite3_db_config(database, SQLITE_DBCONFIG_ENABLE_TRIGGER, 0, nullptr);
}

Statement prepare(sqlite3* database, const char* text) {
    sqlite3_stmt* prepared = nullptr;
    sqlite3_prepare_v2(database, text, -1, &prepared, nullptr);
    return Statement(prepared);
}

/// Whether the table's columns are stored. A generated one may run any function on any amount of
/// text, without a question to the authorizer.
bool isStored(sqlite3* database) {
    constexpr int name = 1, hidden = 6;  // of the reply's columns
    const Statement columns = prepare(database, "PRAGMA table_xinfo(message)");
    int code = SQLITE_ERROR;
    while (columns && (code = sqlite3_step(columns.get())) == SQLITE_ROW) {
        const auto* const text =
            reinterpret_cast<const char*>(sqlite3_column_text(columns.get(), name));
        const bool isRead = is(text, "data") || is(text, "time_created");
        if (isRead && sqlite3_column_int(columns.get(), hidden) != 0) return false;
    }
    return code == SQLITE_DONE;
}

/// What tells whether a read saw one moment: SQLite's own tool changes one of these before anything
/// that was there is overwritten.
struct Files {
    std::filesystem::file_time_type modifiedAt;
    std::optional<std::string> header;     // of the database
    std::optional<std::string> logHeader;  // changes when the log is begun anew
    bool operator==(const Files&) const = default;
};

Files filesOf(const std::string& path) {
    constexpr std::size_t headerBytes = 100, logHeaderBytes = 32;
    std::error_code ignored;
    return {std::filesystem::last_write_time(path, ignored),
            RegularFile::beginning(path, headerBytes),
            RegularFile::beginning(path + "-wal", logHeaderBytes)};
}

/// Whether bytes 18 and 19, the file format's versions, say that there may be a write-ahead log.
bool usesLog(std::string_view header) {
    return header.substr(0, 20).ends_with("\2\2");
}

std::optional<std::int64_t> sum(const std::string& path, const Files& files,
                                Monotonic::time_point deadline) {
    std::error_code error;
    const auto logBytes = std::filesystem::file_size(path + "-wal", error);
    if (!error && logBytes > maxLogBytes) return std::nullopt;
    // SQLite would fail for want of the log.
    const bool lacksLog = usesLog(files.header.value_or("")) && !files.logHeader;
    const Database database = open(path, lacksLog ? "?immutable=1" : "");
    if (!database) return std::nullopt;
    distrust(database.get(), &deadline);
    // So its index of the log is in its own memory.
    sqlite3_exec(database.get(), "PRAGMA locking_mode=EXCLUSIVE", nullptr, nullptr, nullptr);
    if (!isStored(database.get())) return std::nullopt;

    sqlite3_set_authorizer(database.get(), authorize, nullptr);
    const Statement statement = prepare(database.get(), tokenSum);
    if (!statement) return std::nullopt;
    const auto cutOff =
        static_cast<std::int64_t>((Clock::now() - windowLength) * 1000);  // milliseconds
    sqlite3_bind_int64(statement.get(), 1, cutOff);
    if (sqlite3_step(statement.get()) != SQLITE_ROW) return std::nullopt;
    return sqlite3_column_int64(statement.get(), 0);
}

}  // namespace

std::optional<std::int64_t> OpenCodeProvider::tokensInLastFiveHours(const std::string& dbPath) {
    std::error_code error;
    const std::string path = std::filesystem::canonical(dbPath, error);  // beside which the log is
    auto deadline = Monotonic::now() + timeout;
    Files files = filesOf(path);
    for (int attempt = 0; !error && attempt < maxAttempts && !hasPassed(&deadline); ++attempt) {
        const auto tokens = sum(path, files, deadline);
        const Files before = std::exchange(files, filesOf(path));
        if (files == before) return tokens;
    }
    return std::nullopt;
}
