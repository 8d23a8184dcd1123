#include <gtest/gtest.h>

#include "Tests/Support/TemporaryHome.h"

TEST(Pictures, ArePutWholeWhereTheyAreAskedForAndLookAlikeEverywhere) {
    const TemporaryHome home;
    const auto out = TemporaryHome::beside("out");
    TemporaryHome::shell("timeout 90 sh '" FIXTURES "/scenarios/pictures.sh' '" QUILLET "' >" +
                         out + " 2>&1");
    EXPECT_EQ(textOf(out), R"(wrote /tmp/quillet-preview.png 00 00 07 34 00 00 00 3c 08 06
wrote /tmp/quillet-panel.png 00 00 03 10 00 00 03 28 08 06
wrote /tmp/quillet-menubar.png 00 00 01 a6 00 00 00 30 08 06
quillet: the desktop half is not installed
.: after copy folder found menubar.png panel.png preview.png folder:
)");
}
