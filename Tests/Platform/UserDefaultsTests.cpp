#include "Platform/UserDefaults.h"

#include <gtest/gtest.h>

#include "Tests/Support/TemporaryHome.h"

namespace {

namespace fs = std::filesystem;
using nlohmann::json;
using namespace std::string_literals;

constexpr auto file = ".config/quillet/defaults.json";

json stored() {
    return json::parse(textOf(TemporaryHome::at(file)));
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
    const std::string nested = std::string(200'000, '[') + std::string(200'000, ']');
    std::string aside = TemporaryHome::at(file) + ".unreadable";
    for (int count = 2;
         const auto& text : {"[\"a\"]"s, "{\"a\":1}x"s, "{\"a\":" + nested + "}",
                             "{}" + std::string(1 << 20, ' '), "{}" + std::string(2001, '\n')}) {
        TemporaryHome::write(file, text);
        EXPECT_EQ(UserDefaults::text("a"), std::nullopt);
        UserDefaults::setText("b", "x");
        EXPECT_TRUE(textOf(aside) == text) << text.substr(0, 9);
        EXPECT_EQ(stored(), (json{{"b", "x"}}));
        aside = TemporaryHome::at(file) + ".unreadable-" + std::to_string(count++);
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
    TemporaryHome::write("dotfiles/.quillet.json.new", "what a killed process leaves");
    UserDefaults::removeUnfinished();
    EXPECT_EQ(TemporaryHome::shell("test \"$(ls -A dotfiles)\" = quillet.json"), 0);
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
