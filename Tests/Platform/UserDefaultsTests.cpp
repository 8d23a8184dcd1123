#include "Platform/UserDefaults.h"

#include <gtest/gtest.h>
#include <signal.h>
#include <sys/wait.h>

#include <chrono>
#include <thread>

#include "Tests/Support/Fixture.h"
#include "Tests/Support/TemporaryHome.h"

namespace {

namespace fs = std::filesystem;
using nlohmann::json;

constexpr auto file = ".config/quillet/defaults.json";

std::ptrdiff_t filesIn(const std::string& directory) {
    return std::distance(fs::directory_iterator(TemporaryHome::at(directory)), {});
}

}  // namespace

TEST(UserDefaults, AValueOfAnotherTypeIsAbsentAndAWriteLosesNothing) {
    // Stored, array "a", text "a", stored once "b" is "x", set aside.
    for (const auto& row : fixture("tables/user-defaults")) {
        SCOPED_TRACE(row[0].dump().substr(0, 99));
        const TemporaryHome home;
        std::string text = row[0];
        if (text == "large") text = "{}" + std::string(1 << 20, ' ');
        if (text == "many") text = "{}" + std::string(2001, '\n');
        if (text == "deep")
            text = "{\"a\":" + std::string(200'000, '[') + std::string(200'000, ']') + "}";
        const auto target = TemporaryHome::write("dotfiles/quillet.json", text),
                   path = TemporaryHome::write(file, "");
        fs::remove(path);
        fs::create_symlink("../../dotfiles/quillet.json", path);
        const auto array = UserDefaults::textArray("a");
        EXPECT_EQ(array ? json(*array) : json(), row[1]);
        EXPECT_EQ(orNull(UserDefaults::text("a")), row[2]);
        UserDefaults::setText("b", "x");
        EXPECT_TRUE(fs::is_symlink(path));
        EXPECT_EQ(json::parse(textOf(target), nullptr, false), row[3]);
        EXPECT_EQ(filesIn("dotfiles"), row[4] ? 2 : 1);
    }
    const TemporaryHome home;
    UserDefaults::setTextArray("a", {"é", "\xFF"});
    EXPECT_EQ(UserDefaults::textArray("a"), (std::vector<std::string>{"é", "\uFFFD"}));
}

TEST(UserDefaults, ALinkToNothingYetIsFilledAndAFIFOBehindOneIsLeftAlone) {
    const TemporaryHome home;
    const auto path = TemporaryHome::write(file, "");
    ASSERT_EQ(TemporaryHome::shell("mkdir dotfiles; mkfifo fifo"), 0);
    for (const char* target : {"../../dotfiles/quillet.json", "../../fifo"}) {
        fs::remove(path);
        fs::create_symlink(target, path);
        UserDefaults::setText("b", "x");
    }
    EXPECT_EQ(json::parse(textOf(TemporaryHome::at("dotfiles/quillet.json"))), (json{{"b", "x"}}));
    EXPECT_TRUE(fs::is_fifo(TemporaryHome::at("fifo")));
    EXPECT_EQ(json::parse(textOf(path)), (json{{"b", "x"}}));
}

TEST(UserDefaults, AnotherUsersFileBehindALinkIsLeftAlone) {
    const TemporaryHome home;
    const auto path = TemporaryHome::write(file, ""), target = TemporaryHome::write("theirs", "{}");
    fs::remove(path);
    fs::create_symlink(target, path);
    if (chown(target.c_str(), 65534, 65534) != 0) GTEST_SKIP() << "needs root";
    UserDefaults::setText("b", "x");
    EXPECT_EQ(textOf(target), "{}");
    EXPECT_EQ(UserDefaults::text("b"), "x") << "kept in memory";
    fs::remove(path);
    UserDefaults::setText("c", "x");
    EXPECT_EQ(json::parse(textOf(path)), (json{{"b", "x"}, {"c", "x"}}));
}

TEST(UserDefaults, EveryUnreadableFileIsSetAsideUnderANameOfItsOwn) {
    const TemporaryHome home;
    for (const char* text : {"first {", "second {"}) {
        TemporaryHome::write(file, text);
        UserDefaults::setText("b", "x");
    }
    EXPECT_EQ(textOf(TemporaryHome::at(file) + ".unreadable"), "first {");
    EXPECT_EQ(textOf(TemporaryHome::at(file) + ".unreadable-2"), "second {");
    EXPECT_EQ(UserDefaults::text("b"), "x");
}

TEST(UserDefaults, WhatCannotBeSavedHoldsAndIsSavedLater) {
    const TemporaryHome home;
    TemporaryHome::write(".config", "no directory");
    UserDefaults::setText("first", "1");
    EXPECT_EQ(UserDefaults::text("first"), "1");
    fs::remove(TemporaryHome::at(".config"));
    UserDefaults::setText("second", "2");
    EXPECT_EQ(json::parse(textOf(TemporaryHome::at(file))),
              (json{{"first", "1"}, {"second", "2"}}));
}

TEST(UserDefaults, AProcessKilledWhileSavingLeavesAWholeFile) {
    const TemporaryHome home;
    const std::vector<std::string> values[] = {{std::string(50'000, 'a')},
                                               {std::string(90'000, 'b')}};
    const auto begin = std::chrono::steady_clock::now();
    UserDefaults::setTextArray("a", values[0]);
    const auto oneSave = std::chrono::steady_clock::now() - begin;
    int saved = 0;
    for (int i = 0; i < 50; ++i) {
        int firstSave[2];
        ASSERT_EQ(pipe(firstSave), 0);
        const pid_t child = fork();
        for (int j = 1; child == 0; ++j) {  // NOLINT(bugprone-infinite-loop): until it is killed
            UserDefaults::setTextArray("a", values[j % 2]);
            if (j > 1) continue;
            EXPECT_EQ(write(firstSave[1], "", 1), 1);
        }
        close(firstSave[1]);
        char byte = 0;
        EXPECT_EQ(read(firstSave[0], &byte, 1), 1) << "the process ended";
        close(firstSave[0]);
        std::this_thread::sleep_for(oneSave * i / 20);
        kill(child, SIGKILL);
        waitpid(child, nullptr, 0);
        const auto found = UserDefaults::textArray("a");
        ASSERT_TRUE(found == values[0] || found == values[1]) << i;
        saved += found == values[1];
    }
    EXPECT_GT(saved, 0) << "no process came to save anything";
    TemporaryHome::write(".config/quillet/.defaults.json.new", "half");
    UserDefaults::removeUnfinished();
    EXPECT_EQ(filesIn(".config/quillet"), 1);
}
