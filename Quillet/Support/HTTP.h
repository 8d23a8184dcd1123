#pragma once

#include <strings.h>

#include <map>
#include <optional>
#include <string>
#include <vector>

/// The program's one network primitive: a blocking HTTPS GET.
namespace HTTP {

struct Response {
    std::string data;  ///< The body as received, perhaps empty.
    int status = 0;    ///< The HTTP status code; an error status is a response like any other.
};

struct FieldOrder {
    bool operator()(const std::string& a, const std::string& b) const {
        return strcasecmp(a.c_str(), b.c_str()) < 0;
    }
};

/// Field names, compared without case, and their values.
using Headers = std::map<std::string, std::string, FieldOrder>;

/// Fetches `url` over a connection of its own, past every cache. The call ends when nothing has
/// come for `timeout` seconds, and after `timeout` + 2 seconds at the latest. Absent when there is
/// no whole response by then, or too large a one, when the URL or a redirect isn't https, when the
/// certificate isn't valid, or when a header contains a line break. Callable from several threads
/// at once, never from the GUI's.
std::optional<Response> get(const std::string& url, const Headers& headers, double timeout);

/// Ends HTTP for good, as the program ends: calls under way return absent at once, and so do later
/// ones.
void shutDown();

/// What calls trust and where they connect.
struct Transport {
    std::string certificates;            ///< PEM file of authorities; empty: the system's bundle.
    std::vector<std::string> connectTo;  ///< "host:port:address:port" rows: a host's stand-in.
};

/// Ends the calls under way, which return absent, and has later ones use `transport`.
void restart(Transport transport);

}  // namespace HTTP
