#pragma once

#include <algorithm>
#include <csignal>
#include <thread>

#include "Support/HTTP.h"
#include "Tests/Support/TemporaryHome.h"

/// A real server on the loopback that stands for the vendors' hosts until the process ends.
class HTTPSServer {
public:
    HTTPSServer() {
        signal(SIGPIPE, SIG_IGN);  // as the program does; the server closes connections
        std::filesystem::create_directories(directory);
        [[maybe_unused]] FILE* const endsWithItsInput =
            popen(("https-server '" + directory + "' > '" + directory + "/ports'").c_str(), "we");
        for (int i = 0; i < 3000 && port.empty(); i++) {
            std::this_thread::sleep_for(std::chrono::milliseconds(10));
            std::ifstream(directory + "/ports") >> port;
        }
        HTTP::restart({.certificates = certificates(), .connectTo = standIns()});
    }

    std::string certificates() const { return directory + "/ca.pem"; }
    std::string address() const { return "127.0.0.1:" + port; }
    std::vector<std::string> standIns() const {
        return {"api.anthropic.com:443:" + address(), "chatgpt.com:443:" + address(),
                "misnamed.test:443:" + address()};
    }

    /// Has requests for `path` answered by `reply` from now on; Support/https-server has the keys.
    void reply(std::string path, const nlohmann::json& reply) const {
        std::ranges::replace(path, '/', '_');
        std::ofstream(directory + "/" + path) << reply;
        std::filesystem::rename(directory + "/" + path, directory + "/replies/" + path + ".json");
    }

    /// What has come so far; Support/https-server has the keys.
    nlohmann::json seen() const {
        return nlohmann::json::parse(std::ifstream(directory + "/seen.json"));
    }

private:
    const std::string directory = TemporaryHome::beside("server");
    std::string port;
};
