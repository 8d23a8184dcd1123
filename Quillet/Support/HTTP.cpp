// Each call makes its own connection: requests are minutes apart, and the network may have changed.
#include "Support/HTTP.h"

#include <curl/curl.h>

#include <algorithm>
#include <chrono>
#include <cstdlib>
#include <memory>
#include <mutex>
#include <stop_token>
#include <string_view>
#include <utility>

namespace {

using Monotonic = std::chrono::steady_clock;
using std::chrono::milliseconds;

constexpr milliseconds grace(2000);                // beyond the caller's timeout
constexpr std::size_t maxBodyBytes = 64 << 20;     // of the last response
constexpr std::size_t maxHeaderBytes = 256 << 10;  // of all responses of a call, trailers included

std::mutex lock;
HTTP::Transport currentTransport;  // guarded by lock
std::stop_source currentStop;      // guarded by lock

using List = std::unique_ptr<curl_slist, decltype([](curl_slist* l) { curl_slist_free_all(l); })>;
using Easy = std::unique_ptr<CURL, decltype([](CURL* easy) { curl_easy_cleanup(easy); })>;
using Multi = std::unique_ptr<CURLM, decltype([](CURLM* multi) { curl_multi_cleanup(multi); })>;

List list(const std::vector<std::string>& rows) {
    curl_slist* head = nullptr;
    for (const auto& row : rows)
        head = curl_slist_append(head, row.c_str());
    return List(head);
}

std::vector<std::string> fieldRows(const HTTP::Headers& headers) {
    std::vector<std::string> rows;
    for (const auto& [name, value] : headers) {
        // libcurl would leave out a field with nothing after its colon.
        const bool blank = value.find_first_not_of(" \t") == std::string::npos;
        rows.push_back(std::string(name).append(blank ? ";" : ": ").append(blank ? "" : value));
    }
    return rows;
}

bool isOneLine(const std::string& text) {
    return text.find_first_of(std::string_view("\r\n\0", 3)) == std::string::npos;
}

/// A call's limits, and what has come of its response so far.
struct Transfer {
    milliseconds timeout;  // at a standstill
    Monotonic::time_point deadline;
    std::stop_token stop;
    std::string body{};
    std::size_t headerBytes = 0;
    Monotonic::time_point receivedAt = Monotonic::now();  // the newest byte; first the start

    /// Not above 0 once it must end.
    milliseconds left() const {
        if (stop.stop_requested()) return {};
        const auto end = std::min(receivedAt + timeout, deadline);
        return std::chrono::ceil<milliseconds>(end - Monotonic::now());
    }
};

// A callback of libcurl's that returns less than `count` fails the transfer.
std::size_t receiveBody(char* data, std::size_t, std::size_t count, void* user) {
    auto& transfer = *static_cast<Transfer*>(user);
    transfer.receivedAt = Monotonic::now();
    if (transfer.body.size() + count > maxBodyBytes) return 0;
    transfer.body.append(data, count);
    return count;
}

std::size_t receiveHeader(char*, std::size_t, std::size_t count, void* user) {
    auto& transfer = *static_cast<Transfer*>(user);
    transfer.receivedAt = Monotonic::now();
    transfer.headerBytes += count;
    return transfer.headerBytes > maxHeaderBytes ? 0 : count;
}

/// Fails the transfer once it must end: libcurl drops a proxy's endless reply within one call.
int isOver(void* user, curl_off_t, curl_off_t, curl_off_t, curl_off_t) {
    return static_cast<Transfer*>(user)->left().count() <= 0;
}

void setOptions(CURL* easy, const std::string& url, Transfer& transfer) {
    curl_easy_setopt(easy, CURLOPT_URL, url.c_str());
    curl_easy_setopt(easy, CURLOPT_HTTP_VERSION, long{CURL_HTTP_VERSION_1_1});
    curl_easy_setopt(easy, CURLOPT_WRITEFUNCTION, receiveBody);
    curl_easy_setopt(easy, CURLOPT_WRITEDATA, &transfer);
    curl_easy_setopt(easy, CURLOPT_HEADERFUNCTION, receiveHeader);
    curl_easy_setopt(easy, CURLOPT_HEADERDATA, &transfer);
    curl_easy_setopt(easy, CURLOPT_XFERINFOFUNCTION, isOver);
    curl_easy_setopt(easy, CURLOPT_XFERINFODATA, &transfer);
    curl_easy_setopt(easy, CURLOPT_NOPROGRESS, 0L);
    curl_easy_setopt(easy, CURLOPT_NOSIGNAL, 1L);
    curl_easy_setopt(easy, CURLOPT_QUICK_EXIT, 1L);  // don't wait for a name lookup that hangs
    // libcurl sends a custom Authorization field to no other host than the URL's.
    curl_easy_setopt(easy, CURLOPT_FOLLOWLOCATION, 1L);
    curl_easy_setopt(easy, CURLOPT_MAXREDIRS, 10L);
    curl_easy_setopt(easy, CURLOPT_PROTOCOLS_STR, "https");

    // Unless it is set, libcurl reads other proxy variables too. It always reads no_proxy.
    const char* proxy = std::getenv("https_proxy");
    if (!proxy || !*proxy) proxy = std::getenv("HTTPS_PROXY");
    curl_easy_setopt(easy, CURLOPT_PROXY, proxy ? proxy : "");
}

/// Runs the transfer until it ends or must end. curl_easy_perform would notice a request to stop
/// only once a second.
CURLcode perform(CURL* easy, const Transfer& transfer) {
    const Multi multi(curl_multi_init());
    if (curl_multi_add_handle(multi.get(), easy) != CURLM_OK) return CURLE_FAILED_INIT;
    const std::stop_callback wake(transfer.stop, [&] { curl_multi_wakeup(multi.get()); });
    for (int running = 1; running > 0 && transfer.left().count() > 0;) {
        const auto left = static_cast<int>(transfer.left().count());
        curl_multi_poll(multi.get(), nullptr, 0, std::max(left, 0), nullptr);
        curl_multi_perform(multi.get(), &running);
    }
    int queued = 0;
    const CURLMsg* const message = curl_multi_info_read(multi.get(), &queued);
    const CURLcode code = message ? message->data.result : CURLE_ABORTED_BY_CALLBACK;
    curl_multi_remove_handle(multi.get(), easy);
    return code;
}

}  // namespace

std::optional<HTTP::Response> HTTP::get(const std::string& url, const Headers& headers,
                                        double timeout) {
    const auto rows = fieldRows(headers);
    if (!isOneLine(url) || !std::ranges::all_of(rows, isOneLine)) return std::nullopt;
    std::unique_lock guard(lock);
    const Transport transport = currentTransport;
    const std::stop_token stop = currentStop.get_token();
    guard.unlock();
    const List fields = list(rows), connectTo = list(transport.connectTo);
    const auto limit = std::chrono::ceil<milliseconds>(std::chrono::duration<double>(timeout));
    const auto deadline = Monotonic::now() + limit + grace;
    const std::string& file = transport.certificates;
    const char* const own = file.empty() ? nullptr : file.c_str();
    // The system's bundle takes 20 ms to parse, so its hashed directory alone is tried first.
    for (const bool usesBundle : {false, true}) {
        Transfer transfer{limit, deadline, stop};
        const Easy easy(curl_easy_init());
        setOptions(easy.get(), url, transfer);
        curl_easy_setopt(easy.get(), CURLOPT_HTTPHEADER, fields.get());
        curl_easy_setopt(easy.get(), CURLOPT_CONNECT_TO, connectTo.get());
        if (own || !usesBundle) curl_easy_setopt(easy.get(), CURLOPT_CAINFO, own);
        const CURLcode code = perform(easy.get(), transfer);
        long status = 0;
        curl_easy_getinfo(easy.get(), CURLINFO_RESPONSE_CODE, &status);
        if (code == CURLE_OK) return Response{std::move(transfer.body), static_cast<int>(status)};
        if (code != CURLE_PEER_FAILED_VERIFICATION) break;
    }
    return std::nullopt;
}

void HTTP::shutDown() {
    const std::lock_guard guard(lock);
    currentStop.request_stop();
}

void HTTP::restart(Transport transport) {
    const std::lock_guard guard(lock);
    currentStop.request_stop();
    currentStop = std::stop_source();
    currentTransport = std::move(transport);
}
