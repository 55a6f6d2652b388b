#include "common/Json.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

using namespace corvel;
using ::testing::HasSubstr;
using ::testing::StartsWith;
using ::testing::StrEq;
using ::testing::ThrowsMessage;

TEST(JsonHelpers, OptionalFieldsAreAbsentKeys) {
    Json j = Json::object();
    putOptional(j, "missing", std::optional<int>{});
    putOptional(j, "present", std::optional<int>{7});
    EXPECT_FALSE(j.contains("missing"));
    EXPECT_EQ(j.at("present"), 7);
    EXPECT_EQ(optionalValue<int>(j, "present"), 7);
    EXPECT_EQ(optionalValue<int>(j, "missing"), std::nullopt);
    EXPECT_EQ(optionalValue<int>(Json{{"n", nullptr}}, "n"), std::nullopt);
    EXPECT_EQ(valueOr<int>(j, "missing", 3), 3);
}

TEST(JsonHelpers, DecodingErrorsNameTheKey) {
    const Json j{{"size", "big"}};
    EXPECT_THAT([&] { required<std::int64_t>(j, "size"); }, ThrowsMessage<DecodingError>(HasSubstr("'size'")));
    EXPECT_THAT([&] { required<std::string>(j, "name"); }, ThrowsMessage<DecodingError>(StrEq("missing key 'name'")));
    EXPECT_THROW(optionalValue<bool>(j, "size"), DecodingError);
}

// Found by fuzzing the recording loader: a byte count written as 6.1235e+39.
TEST(JsonHelpers, FloatingPointNumbersBeyondAnIntegersRangeAreRefused) {
    const Json j =
        Json::parse(R"({"huge": 6.1235e+39, "negative": -1.0, "whole": 3.0, "edge": 9.3e18, "low": -9.2e18})");
    EXPECT_THROW(required<std::int64_t>(j, "huge"), DecodingError);
    EXPECT_THROW(required<std::int64_t>(j, "edge"), DecodingError);
    EXPECT_THROW(required<std::uint32_t>(j, "negative"), DecodingError);
    EXPECT_EQ(required<std::int64_t>(j, "low"), std::int64_t(-9.2e18));
    EXPECT_EQ(required<std::uint32_t>(j, "whole"), 3u);
    EXPECT_EQ(optionalValue<std::int32_t>(j, "negative"), -1);
}

TEST(JsonHelpers, ParseErrorsNameTheInput) {
    EXPECT_EQ(parseJsonText(R"({"a": [1, 2]})", "x").at("a").size(), 2u);
    EXPECT_THAT([] { parseJsonText("{\"a\": ", "settings.json"); },
                ThrowsMessage<DecodingError>(StartsWith("settings.json: not valid JSON")));
}

TEST(JsonHelpers, KeysKeepTheirWrittenOrder) {
    Json j = Json::object();
    j["zeta"] = 1;
    j["alpha"] = 2;
    EXPECT_EQ(j.dump(), R"({"zeta":1,"alpha":2})");
}

TEST(JsonHelpers, ADocumentNestedAHundredThousandLevelsDeepIsRefusedWithoutExhaustingTheStack) {
    const std::string text = std::string(100000, '[') + std::string(100000, ']');
    EXPECT_THROW(parseJsonText(text, "deep.json"), DecodingError);
}
