#include "Platform/UserDefaults.h"

#include <gtest/gtest.h>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <thread>

#include "Tests/Support/TemporaryHome.h"

namespace {

namespace fs = std::filesystem;
using nlohmann::json;

constexpr auto file = ".config/quillet/defaults.json";

json stored() {
    return json::parse(textOf(TemporaryHome::at(file)));
}

std::ptrdiff_t filesIn(const std::string& directory) {
    return std::distance(fs::directory_iterator(TemporaryHome::at(directory)), {});
}

}  // namespace

TEST(UserDefaults, AValueOfAnotherTypeIsAbsentAndAWriteLosesNothing) {
    const TemporaryHome home;
    const std::tuple<const char*, std::optional<std::vector<std::string>>, const char*> cases[] = {
        {R"({"a":["x",""],"later":{"n":[1,null]}})", {{"x", ""}}, "none"},
        {R"({"a":["x",1],"b":"old"})", {}, "none"},
        {R"({"a":"x"})", {}, "x"},
        {R"({"a":{"0":"x"},"A":["x"]})", {}, "none"}};
    for (const auto& [written, array, text] : cases) {
        TemporaryHome::write(file, written);
        EXPECT_EQ(UserDefaults::textArray("a"), array) << written;
        EXPECT_EQ(UserDefaults::text("a").value_or("none"), text) << written;
        UserDefaults::setText("b", "x");
        auto expected = json::parse(written);
        expected["b"] = "x";
        EXPECT_EQ(stored(), expected);
    }
    UserDefaults::setTextArray("a", {"é", "\xFF"});
    EXPECT_EQ(UserDefaults::textArray("a"), (std::vector<std::string>{"é", "\uFFFD"}));
}

TEST(UserDefaults, EveryUnreadableFileIsSetAsideUnderANameOfItsOwn) {
    const TemporaryHome home;
    int count = 0;
    for (const std::string& text :
         {std::string("[\"a\"]"), std::string("{\"a\":1}x"), "{}" + std::string(1 << 20, ' '),
          "{}" + std::string(2001, '\n'),
          "{\"a\":" + std::string(200'000, '[') + std::string(200'000, ']') + "}"}) {
        TemporaryHome::write(file, text);
        EXPECT_EQ(UserDefaults::text("a"), std::nullopt);
        UserDefaults::setText("b", "x");
        const auto aside = count++ ? ".unreadable-" + std::to_string(count) : ".unreadable";
        EXPECT_TRUE(textOf(TemporaryHome::at(file) + aside) == text) << text.substr(0, 9);
        EXPECT_EQ(stored(), (json{{"b", "x"}}));
    }
}

TEST(UserDefaults, ALinkStaysAndAnotherUsersFileBehindItIsLeftAlone) {
    const TemporaryHome home;
    const auto path = TemporaryHome::write(file, ""), theirs = TemporaryHome::write("theirs", "{}");
    ASSERT_EQ(TemporaryHome::shell("mkdir dotfiles; mkfifo fifo"), 0);
    const auto savedThrough = [&path](const char* target, const char* key) {
        fs::remove(path);
        fs::create_symlink(target, path);
        UserDefaults::setText(key, "x");
        return fs::is_symlink(path);
    };
    for (const char* key : {"a", "b"})  // a file yet to be made, then made
        EXPECT_TRUE(savedThrough("../../dotfiles/quillet.json", key));
    EXPECT_EQ(stored(), (json{{"a", "x"}, {"b", "x"}}));
    EXPECT_EQ(filesIn("dotfiles"), 1);
    EXPECT_FALSE(savedThrough("../../fifo", "c"));
    EXPECT_TRUE(fs::is_fifo(TemporaryHome::at("fifo")));
    EXPECT_EQ(stored(), (json{{"c", "x"}}));
    if (chown(theirs.c_str(), 65534, 65534) != 0) GTEST_SKIP() << "needs root";
    EXPECT_TRUE(savedThrough("../../theirs", "d"));
    EXPECT_EQ(textOf(theirs), "{}");
    EXPECT_EQ(UserDefaults::text("d"), "x") << "kept in memory";
}

TEST(UserDefaults, WhatCannotBeSavedHoldsAndIsSavedLater) {
    const TemporaryHome home;
    TemporaryHome::write(".config", "no directory");
    UserDefaults::setText("first", "1");
    EXPECT_EQ(UserDefaults::text("first"), "1");
    fs::remove(TemporaryHome::at(".config"));
    UserDefaults::setText("second", "2");
    EXPECT_EQ(stored(), (json{{"first", "1"}, {"second", "2"}}));
}

TEST(UserDefaults, AProcessKilledWhileSavingLeavesAWholeFile) {
    const TemporaryHome home;
    const std::vector<std::string> values[] = {{std::string(50'000, 'a')},
                                               {std::string(90'000, 'b')}};
    const auto begin = std::chrono::steady_clock::now();
    UserDefaults::setTextArray("a", values[0]);
    const auto oneSave = std::chrono::steady_clock::now() - begin;
    for (int i = 0, saved = 0; saved < 30; ++i) {  // without a limit, as machines differ
        const pid_t child = fork();
        if (child == 0) alarm(60);        // should this process die first
        for (int j = 1; child == 0; ++j)  // NOLINT(bugprone-infinite-loop): until it is killed
            UserDefaults::setTextArray("a", values[j % 2]);
        std::this_thread::sleep_for((oneSave / 10 + std::chrono::milliseconds(1)) * (i % 30));
        kill(child, SIGKILL);
        waitpid(child, nullptr, 0);
        const auto found = UserDefaults::textArray("a");
        ASSERT_TRUE(found == values[0] || found == values[1]) << i;
        saved += found == values[1];
    }
    TemporaryHome::write(".config/quillet/.defaults.json.new", "half");
    UserDefaults::removeUnfinished();
    EXPECT_EQ(filesIn(".config/quillet"), 1);
}
