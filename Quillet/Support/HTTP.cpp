// One session serves the whole process: a single thread drives every transfer, so connections are
// kept and shared, and a caller's deadline never depends on what that thread is busy with.
#include "Support/HTTP.h"

#include <curl/curl.h>

#include <pthread.h>
#include <algorithm>
#include <chrono>
#include <condition_variable>
#include <csignal>
#include <cstdlib>
#include <memory>
#include <mutex>
#include <string_view>
#include <system_error>
#include <thread>
#include <utility>

namespace {

// libcurl would write each connection's keys to the file that the first of these names, and its TLS
// library would load what the others name. They are read at those libraries' start; the environment
// can only be changed safely before there are threads.
[[maybe_unused]] const bool environmentCleared = [] {
    for (const char* name : {"SSLKEYLOGFILE", "OPENSSL_CONF", "OPENSSL_MODULES", "OPENSSL_ENGINES"})
        unsetenv(name);
    return true;
}();

using Monotonic = std::chrono::steady_clock;
using Seconds = std::chrono::duration<double>;

constexpr Seconds grace{2};                    // beyond the caller's time-out
constexpr std::chrono::hours longestPoll{24};  // while nothing is on its way
constexpr double longestTimeout = 3600;        // seconds
constexpr std::size_t largestBody = 1 << 20;   // bytes

/// Where a transfer leaves its result for the caller, who may have stopped waiting by then.
class Slot {
public:
    void finish(std::optional<HTTP::Response> response) {
        const std::lock_guard guard(lock);
        result = std::move(response);
        finished = true;
        changed.notify_all();
    }

    std::optional<HTTP::Response> wait(Monotonic::time_point deadline) {
        std::unique_lock guard(lock);
        changed.wait_until(guard, deadline, [this] { return finished; });
        return std::exchange(result, std::nullopt);
    }

private:
    std::mutex lock;
    std::condition_variable changed;
    bool finished = false;
    std::optional<HTTP::Response> result;
};

struct FreeList {
    void operator()(curl_slist* list) const { curl_slist_free_all(list); }
};
using List = std::unique_ptr<curl_slist, FreeList>;

void append(List& list, const std::string& row) {
    // On success the call returns the list's head, which is the same from the first row on.
    if (curl_slist* head = curl_slist_append(list.get(), row.c_str()); head != list.get()) {
        static_cast<void>(list.release());
        list.reset(head);
    }
}

std::string environment(const char* name) {
    const char* value = std::getenv(name);
    return value ? value : "";
}

/// A request on its way, with all that libcurl refers to while it runs.
struct Transfer {
    Transfer(const std::string& url, const HTTP::Headers& fields, Seconds standstill,
             const HTTP::Transport& transport, std::shared_ptr<Slot> slot);
    ~Transfer() { curl_easy_cleanup(handle); }
    Transfer(const Transfer&) = delete;
    Transfer& operator=(const Transfer&) = delete;

    std::optional<HTTP::Response> outcome(CURLcode code);
    Monotonic::time_point standstillAt() const { return activeAt + timeout; }

    const Monotonic::duration timeout;
    Monotonic::time_point activeAt = Monotonic::now();  // when anything came last
    CURL* const handle = curl_easy_init();
    List headers;
    List connectTo;
    std::string body;
    std::shared_ptr<Slot> slot;
};

std::size_t collectBody(char* data, std::size_t, std::size_t count, void* owner) {
    auto& transfer = *static_cast<Transfer*>(owner);
    transfer.activeAt = Monotonic::now();
    if (transfer.body.size() + count > largestBody) return 0;  // ends the transfer as failed
    transfer.body.append(data, count);
    return count;
}

std::size_t noteHeader(char*, std::size_t, std::size_t count, void* owner) {
    static_cast<Transfer*>(owner)->activeAt = Monotonic::now();
    return count;
}

Monotonic::duration monotonic(Seconds seconds) {
    return std::chrono::duration_cast<Monotonic::duration>(seconds);
}

Transfer::Transfer(const std::string& url, const HTTP::Headers& fields, Seconds standstill,
                   const HTTP::Transport& transport, std::shared_ptr<Slot> resultSlot)
    : timeout(monotonic(standstill)), slot(std::move(resultSlot)) {
    // A field without a value is written with a semicolon; with a colon libcurl would leave it out.
    for (const auto& [name, value] : fields) {
        const bool blank = value.find_first_not_of(" \t") == std::string::npos;
        append(headers, std::string(name).append(blank ? ";" : ": ").append(blank ? "" : value));
    }
    for (const auto& row : transport.connectTo)
        append(connectTo, row);

    curl_easy_setopt(handle, CURLOPT_URL, url.c_str());
    curl_easy_setopt(handle, CURLOPT_HTTPHEADER, headers.get());
    curl_easy_setopt(handle, CURLOPT_WRITEFUNCTION, collectBody);
    curl_easy_setopt(handle, CURLOPT_WRITEDATA, this);
    curl_easy_setopt(handle, CURLOPT_HEADERFUNCTION, noteHeader);
    curl_easy_setopt(handle, CURLOPT_HEADERDATA, this);
    curl_easy_setopt(handle, CURLOPT_NOSIGNAL, 1L);
    curl_easy_setopt(handle, CURLOPT_QUICK_EXIT, 1L);  // don't wait for a name lookup that hangs

    // A custom Authorization field stays with the host it was meant for; libcurl sees to that.
    curl_easy_setopt(handle, CURLOPT_FOLLOWLOCATION, 1L);
    curl_easy_setopt(handle, CURLOPT_MAXREDIRS, 10L);
    curl_easy_setopt(handle, CURLOPT_PROTOCOLS_STR, "https");

    // Given explicitly, so that of all the proxy variables only these count; libcurl reads no_proxy
    // itself.
    const std::string proxy = environment("https_proxy");
    curl_easy_setopt(handle, CURLOPT_PROXY,
                     (proxy.empty() ? environment("HTTPS_PROXY") : proxy).c_str());
    curl_easy_setopt(handle, CURLOPT_CONNECT_TO, connectTo.get());
    if (!transport.certificates.empty()) {
        curl_easy_setopt(handle, CURLOPT_CAINFO, transport.certificates.c_str());
        curl_easy_setopt(handle, CURLOPT_CAPATH, nullptr);
    }

    // A transfer that only drips is given up by its caller and must then not live for ever.
    curl_easy_setopt(handle, CURLOPT_TIMEOUT_MS,
                     static_cast<long>(2000 * (standstill + grace).count()));
}

std::optional<HTTP::Response> Transfer::outcome(CURLcode code) {
    long status = 0;
    curl_easy_getinfo(handle, CURLINFO_RESPONSE_CODE, &status);
    if (code != CURLE_OK || status == 0) return std::nullopt;
    return HTTP::Response{std::move(body), static_cast<int>(status)};
}

/// Owns the connections and the thread that drives the transfers.
class Session {
public:
    explicit Session(HTTP::Transport transport);
    ~Session();  // transfers still on their way end as absent
    Session(const Session&) = delete;
    Session& operator=(const Session&) = delete;

    void start(const std::string& url, const HTTP::Headers& headers, Seconds timeout,
               std::shared_ptr<Slot> slot);

private:
    void drive();
    bool takeArrivals();
    void deliverFinished();
    void endStandstills();
    int millisecondsToStandstill() const;
    void finish(CURL* handle, CURLcode code);

    const HTTP::Transport transport;
    CURLM* const multi;
    std::mutex lock;
    std::vector<std::unique_ptr<Transfer>> arrivals;  // guarded by lock
    bool ending = false;                              // guarded by lock
    std::vector<std::unique_ptr<Transfer>> running;   // the driving thread's alone
    std::thread thread;
};

/// Threads started in its scope leave every signal to the main thread; a broken connection raises
/// no SIGPIPE either.
class SignalsBlocked {
public:
    SignalsBlocked() {
        sigset_t all;
        sigfillset(&all);
        pthread_sigmask(SIG_SETMASK, &all, &before);
    }
    ~SignalsBlocked() { pthread_sigmask(SIG_SETMASK, &before, nullptr); }
    SignalsBlocked(const SignalsBlocked&) = delete;
    SignalsBlocked& operator=(const SignalsBlocked&) = delete;

private:
    sigset_t before{};
};

Session::Session(HTTP::Transport chosen) : transport(std::move(chosen)), multi(curl_multi_init()) {
    const SignalsBlocked blocked;
    thread = std::thread([this] { drive(); });
}

Session::~Session() {
    {
        const std::lock_guard guard(lock);
        ending = true;
    }
    curl_multi_wakeup(multi);
    thread.join();
    curl_multi_cleanup(multi);
}

void Session::start(const std::string& url, const HTTP::Headers& headers, Seconds timeout,
                    std::shared_ptr<Slot> slot) {
    auto transfer = std::make_unique<Transfer>(url, headers, timeout, transport, std::move(slot));
    {
        const std::lock_guard guard(lock);
        arrivals.push_back(std::move(transfer));
    }
    curl_multi_wakeup(multi);
}

void Session::drive() {
    while (takeArrivals()) {
        int active = 0;
        curl_multi_perform(multi, &active);
        deliverFinished();
        endStandstills();
        curl_multi_poll(multi, nullptr, 0, millisecondsToStandstill(), nullptr);  // or until woken
    }
    while (!running.empty())
        finish(running.back()->handle, CURLE_ABORTED_BY_CALLBACK);
}

/// Puts new transfers on their way; false once the session ends.
bool Session::takeArrivals() {
    const std::lock_guard guard(lock);
    for (auto& transfer : arrivals) {
        curl_multi_add_handle(multi, transfer->handle);
        running.push_back(std::move(transfer));
    }
    arrivals.clear();
    return !ending;
}

void Session::deliverFinished() {
    int queued = 0;
    while (const CURLMsg* message = curl_multi_info_read(multi, &queued)) {
        if (message->msg == CURLMSG_DONE) finish(message->easy_handle, message->data.result);
    }
}

void Session::endStandstills() {
    const auto now = Monotonic::now();
    for (std::size_t i = running.size(); i-- > 0;) {
        if (running[i]->standstillAt() <= now) finish(running[i]->handle, CURLE_OPERATION_TIMEDOUT);
    }
}

int Session::millisecondsToStandstill() const {
    auto next = Monotonic::now() + longestPoll;
    for (const auto& transfer : running)
        next = std::min(next, transfer->standstillAt());
    const auto left = std::chrono::ceil<std::chrono::milliseconds>(next - Monotonic::now());
    return static_cast<int>(std::max(left.count(), std::chrono::milliseconds::rep{0}));
}

void Session::finish(CURL* handle, CURLcode code) {
    curl_multi_remove_handle(multi, handle);
    const auto position =
        std::ranges::find(running, handle, [](const auto& transfer) { return transfer->handle; });
    (*position)->slot->finish((*position)->outcome(code));
    running.erase(position);
}

/// The process's session, made at the first request: programs that need no network never start its
/// thread.
class SharedSession {
public:
    /// Absent once it was shut down.
    std::shared_ptr<Session> get() {
        const std::lock_guard guard(lock);
        if (!session && !closed) session = std::make_shared<Session>(transport);
        return session;
    }

    void restart(HTTP::Transport next) {
        const auto ended = end();
        const std::lock_guard guard(lock);
        transport = std::move(next);
        closed = false;
    }

    void shutDown() { const auto ended = end(); }

private:
    /// The session that ran, for the caller to let go of without the lock.
    std::shared_ptr<Session> end() {
        const std::lock_guard guard(lock);
        closed = true;
        return std::exchange(session, nullptr);
    }

    std::mutex lock;
    HTTP::Transport transport;
    std::shared_ptr<Session> session;
    bool closed = false;
};

/// Never destroyed, as a thread may still ask for it while the process exits. The session in it
/// ends at exit: after libcurl's start was asked for, so before the TLS library's own end.
SharedSession& sharedSession() {
    static SharedSession* const shared = [] {
        curl_global_init(CURL_GLOBAL_DEFAULT);
        std::atexit(HTTP::shutDown);
        return new SharedSession;
    }();
    return *shared;
}

/// False when there is no session to start it, which is so at the process's end or where no thread
/// can be made.
bool start(const std::string& url, const HTTP::Headers& headers, Seconds timeout,
           std::shared_ptr<Slot> slot) try {
    const auto session = sharedSession().get();
    if (session) session->start(url, headers, timeout, std::move(slot));
    return session != nullptr;
} catch (const std::system_error&) {
    return false;
}

bool isSafe(const std::string& text) {
    return text.find_first_of(std::string_view("\r\n\0", 3)) == std::string::npos;
}

}  // namespace

std::optional<HTTP::Response> HTTP::get(const std::string& url, const Headers& headers,
                                        double timeout) {
    const auto fieldIsSafe = [](const auto& field) {
        return isSafe(field.first) && isSafe(field.second);
    };
    if (!isSafe(url) || !std::ranges::all_of(headers, fieldIsSafe)) return std::nullopt;

    const Seconds bounded(timeout > 0 ? std::min(timeout, longestTimeout) : 0);
    const auto deadline = Monotonic::now() + monotonic(bounded + grace);
    const auto slot = std::make_shared<Slot>();
    return start(url, headers, bounded, slot) ? slot->wait(deadline) : std::nullopt;
}

void HTTP::restart(Transport transport) {
    sharedSession().restart(std::move(transport));
}

void HTTP::shutDown() {
    sharedSession().shutDown();
}
