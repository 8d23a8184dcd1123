#include "Support/JSON.h"

#include <gtest/gtest.h>

TEST(JSON, OnlyAWholeObjectThatCostsLittleParses) {
    using namespace std::string_literals;
    EXPECT_EQ(JSONObject::parse("{\"n\":18446744073709551616}")->number("n"), 0x1p64);
    EXPECT_FALSE(JSONObject::parse("[]") || JSONObject::parse("{}\0"s));
    std::string many = "{\"many\":[[]";
    while (many.size() < 1 << 20)
        many += ",[]";
    EXPECT_FALSE(JSONObject::parse(many + "]}"));
    EXPECT_FALSE(JSONObject::parse("{" + std::string(1'000'001, '\n') + "}"));
}
