#include <gtest/gtest.h>

#include "Support/ISO8601.h"
#include "Support/JSON.h"

TEST(ISO8601, OnlyWholeDateTimesOfYearsThatCanBeSpelt) {
    EXPECT_EQ(ISO8601::parse("2025-06-01T06:30:00.250-05:30"), 1748779200.25);
    EXPECT_EQ(ISO8601::parse("2025-06-01T14:30:00+0230"), 1748779200);
    for (const char* text : {"2023-02-29T00:00:00Z", "2025-06-01T12:00:00", "2025-06-01T12:00:+1Z"})
        EXPECT_FALSE(ISO8601::parse(text)) << text;
    EXPECT_FALSE(ISO8601::format(253402300800) || ISO8601::format(-62167219201));
}

TEST(JSON, OnlyAWholeObjectParsesAndAMemberOfAnotherTypeIsNoted) {
    const std::string good = R"({"n":18446744073709551616,"b":true,"nul":null,"m":[{},1]})";
    const auto object = JSONObject::parse(good);
    EXPECT_EQ(object->number("n"), 0x1p64);
    EXPECT_FALSE(object->text("nul") || object->number("none") || object->hasMismatch());
    EXPECT_FALSE(object->number("b") || object->objects("m"));
    EXPECT_TRUE(object->hasMismatch());

    EXPECT_FALSE(JSONObject::parse("[]") || JSONObject::parse(good + '\0'));
    std::string many = "{\"many\":[[]";
    while (many.size() < 1 << 20)
        many += ",[]";
    EXPECT_FALSE(JSONObject::parse(many + "]}"));
    EXPECT_FALSE(JSONObject::parse("{" + std::string(1'000'001, '\n') + "}"));
}
