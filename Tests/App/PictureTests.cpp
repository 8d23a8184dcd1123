#include <gtest/gtest.h>

#include "Tests/Support/TemporaryHome.h"

TEST(Pictures, ArePutWholeWhereTheyAreAskedForAndLookAlikeEverywhere) {
    const TemporaryHome home;
    const auto out = TemporaryHome::beside("out");
    std::string command =
        "export HOME=\"$PWD\" https_proxy=http://127.0.0.1:1 QUILLET='" QUILLET "'";
    // The sanitizers' dlopen stands in the program's way to its own run path.
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
    command += " LD_LIBRARY_PATH=\"${QUILLET%/*}\"";
#endif
    command += "; timeout 90 sh " FIXTURES "/scenarios/pictures.sh >" + out + " 2>&1";
    TemporaryHome::shell(command);
    EXPECT_EQ(textOf(out), R"(wrote /tmp/quillet-preview.png
 07 34 00 00 00 3c 08 06
wrote /tmp/quillet-panel.png
 03 10 00 00 03 28 08 06
wrote /tmp/quillet-menubar.png
 01 a6 00 00 00 30 08 06
wrote --json
quillet: the desktop half is not installed
.:
--json
1
after
before
copy
folder
found
menubar.png
panel.png
preview.png

folder:
)");
}
