#pragma once

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <map>
#include <nlohmann/json.hpp>
#include <string>
#include <thread>
#include <vector>

#include "Support/HTTP.h"
#include "Tests/Support/TemporaryHome.h"

/// A real server on the loopback that stands for the vendors' hosts as long as the object lives.
class HTTPSServer {
public:
    HTTPSServer() {
        std::filesystem::create_directories(directory);
        const auto command = "'" HTTPS_SERVER "' '" + directory + "' > '" + directory + "/ports'";
        process = popen(command.c_str(), "we");
        for (int i = 0; i < 3000 && mutePort.empty(); i++) {
            std::this_thread::sleep_for(std::chrono::milliseconds(10));
            std::ifstream(directory + "/ports") >> port >> mutePort;
        }
        HTTP::restart({.certificates = certificates(), .connectTo = standIns()});
    }
    ~HTTPSServer() {
        HTTP::restart({});
        pclose(process);  // it ends with its input
        std::filesystem::remove_all(directory);
    }
    HTTPSServer(const HTTPSServer&) = delete;

    std::string certificates() const { return directory + "/ca.pem"; }
    std::string address() const { return "127.0.0.1:" + port; }
    std::vector<std::string> standIns() const {
        return {"api.anthropic.com:443:" + address(), "chatgpt.com:443:" + address(),
                "misnamed.test:443:" + address(), "mute.test:443:127.0.0.1:" + mutePort};
    }

    /// Has requests for `path` answered by `reply` from now on; the keys are in Support/https-server.
    void reply(std::string path, const nlohmann::json& reply) const {
        std::ranges::replace(path, '/', '_');
        std::ofstream(directory + "/new") << reply;
        std::filesystem::rename(directory + "/new", directory + "/replies/" + path + ".json");
    }

    /// The requests so far; with a method only those.
    std::vector<nlohmann::json> requests(const std::string& method = "") const {
        std::vector<nlohmann::json> all;
        std::ifstream log(directory + "/requests.jsonl");
        for (std::string line; std::getline(log, line);)
            all.push_back(nlohmann::json::parse(line));
        if (!method.empty()) std::erase_if(all, [&](const auto& request) { return request["method"] != method; });
        return all;
    }

    /// The fields of the last request but for its host, as [name, value] rows sorted by name.
    nlohmann::json lastFields() const {
        const auto all = requests();
        std::vector<nlohmann::json> fields;
        if (!all.empty()) fields = all.back()["headers"].get<std::vector<nlohmann::json>>();
        std::erase_if(fields, [](const auto& field) { return field[0] == "Host"; });
        std::ranges::sort(fields);
        return fields;
    }

private:
    const std::string directory = TemporaryHome::path() + ".server";
    FILE* process = nullptr;
    std::string port, mutePort;
};
