#include <gtest/gtest.h>
#include <pwd.h>
#include <unistd.h>

#include "Platform/Clock.h"
#include "Platform/HomeDirectory.h"

TEST(HomeDirectory, ARelativeOrEmptyHomeIsReplacedByThePasswordDatabase) {
    const passwd* user = getpwuid(getuid());
    for (const char* home : {"", "relative", "~", "/none"}) {
        setenv("HOME", home, 1);
        EXPECT_EQ(HomeDirectory::path(), *home == '/' ? home : user ? user->pw_dir : "/") << home;
    }
    EXPECT_EQ(HomeDirectory::expanding("~/a~") + HomeDirectory::expanding("~root"),
              "/none/a~~root");
}

TEST(Clock, ADayStartsAtItsFirstMomentAlsoWhereMidnightIsSkippedOrRepeated) {
    // Brazil goes forwards at 0:00 and back at 0:00 to 23:00 of the day before, Cuba back at 1:00
    // to 0:00.
    const char *brazil = "BRT3BRST,M10.3.0/0,M2.3.0/0", *cuba = "CST5CDT,M3.2.0/0,M11.1.0/1";
    const std::tuple<const char*, double, double> cases[] = {{"UTC0", 86399.9, 0},
                                                             {"UTC0", -0.5, -86400},
                                                             {brazil, 1540125000, 1540090800},
                                                             {brazil, 1540090800, 1540090800},
                                                             {brazil, 1540090799, 1540004400},
                                                             {brazil, 1518921000, 1518832800},
                                                             {cuba, 1541350800, 1541304000},
                                                             {cuba, 1541309400, 1541304000}};
    for (const auto& [zone, instant, start] : cases) {
        setenv("TZ", zone, 1);
        tzset();
        EXPECT_EQ(Clock::startOfDay(instant), start)
            << zone << ", " << instant - start << " s into the day";
    }
}
