#include "Providers/OpenCodeProvider.h"

#include <gtest/gtest.h>

#include "Tests/Support/TemporaryHome.h"

TEST(OpenCodeTokens, AReadIsOfOneMomentWhileTheToolWrites) {
    TemporaryHome home;
    ASSERT_EQ(home.shell(R"sh(opencode-tool db "
        PRAGMA journal_mode = WAL; PRAGMA synchronous = OFF; PRAGMA wal_autocheckpoint = 20;
        CREATE TABLE message (time_created, data);
        WITH RECURSIVE c(i) AS (SELECT 1 UNION ALL SELECT i + 1 FROM c WHERE i < 300)
        INSERT INTO message SELECT 9e15, json_object('x', hex(zeroblob(450)), 'tokens',
            json_object('input', iif(i > 150, 2, 0))) FROM c" "
        UPDATE message SET data = json_set(data, '$.tokens.input',
            2 - json_extract(data, '$.tokens.input'))")sh"),
              0);
    int known = 0;
    for (int i = 0; i < 300; ++i) {
        const auto sum = OpenCodeProvider::tokensInLastFiveHours(home.at("db"));
        EXPECT_EQ(sum.value_or(300), 300);
        known += sum.has_value();
    }
    EXPECT_GT(known, 100);
}
