#include "DiagnosticsFixtures.h"
#include "diagnostics/Finding.h"
#include "diagnostics/HealthStatus.h"

#include <gtest/gtest.h>

#include <unordered_set>

namespace corvel {
namespace {

TEST(Severity, OrderedByRawValueAndEncodedAsInteger) {
    EXPECT_LT(Severity::ok, Severity::info);
    EXPECT_LT(Severity::info, Severity::warning);
    EXPECT_LT(Severity::warning, Severity::critical);
    EXPECT_EQ(Json(Severity::critical).dump(), "3");
    EXPECT_EQ(Json::parse("2").get<Severity>(), Severity::warning);
}

TEST(Severity, OutOfRangeIntegersHaveNoSeverity) {
    EXPECT_EQ(severityFromRawValue(0), Severity::ok);
    EXPECT_EQ(severityFromRawValue(3), Severity::critical);
    EXPECT_FALSE(severityFromRawValue(-1));
    EXPECT_FALSE(severityFromRawValue(4));
    EXPECT_THROW(Json::parse("4").get<Severity>(), DecodingError);
    EXPECT_THROW(Json::parse("\"warning\"").get<Severity>(), DecodingError);
}

TEST(HealthDimension, InferredFromRuleIDAndStatusFromSeverity) {
    using D = HealthDimension;
    // Only the exact free-space id is usage; prefixes without their dot fall through.
    for (const char* id : {"disk.smart", "disk.nvme.wear"}) EXPECT_EQ(inferredHealthDimension(id), D::physical) << id;
    for (const char* id : {"volume.readOnly", "volume.freeSpaceSoon", "diskette", ""})
        EXPECT_EQ(inferredHealthDimension(id), D::fileSystem) << id;
    EXPECT_EQ(inferredHealthDimension("volume.freeSpace"), D::usage);
    EXPECT_EQ(inferredHealthDimension("topology.linkSpeed"), D::connection);
    EXPECT_EQ(inferredHealthDimension("availability.missing"), D::availability);
    EXPECT_EQ(
        (std::vector{healthStatusFor(Severity::ok), healthStatusFor(Severity::info), healthStatusFor(Severity::warning),
                     healthStatusFor(Severity::critical)}),
        (std::vector{HealthStatus::normal, HealthStatus::normal, HealthStatus::attention, HealthStatus::critical}));
}

TEST(FindingSubject, JsonShapeWrapsPayloadInUnderscoreZero) {
    EXPECT_EQ(Json(FindingSubject::volume("X")).dump(), R"({"volume":{"_0":"X"}})");
    EXPECT_EQ(Json(FindingSubject::disk("disk4")).dump(), R"({"disk":{"_0":"disk4"}})");
    EXPECT_EQ(Json::parse(R"({"disk":{"_0":"disk4"}})").get<FindingSubject>(), FindingSubject::disk("disk4"));
}

TEST(FindingSubject, IdsNameTheKind) {
    EXPECT_EQ(FindingSubject::disk("disk4").id(), "disk:disk4");
    EXPECT_EQ(FindingSubject::volume("X").id(), "volume:X");
    EXPECT_NE(FindingSubject::disk("X"), FindingSubject::volume("X"));
}

TEST(FindingSubject, MalformedJsonIsADecodingError) {
    for (const char* text : {R"({"file":{"_0":"X"}})", R"({"disk":{"0":"X"}})", R"({"disk":{"_0":4}})",
                             R"({"disk":{"_0":"a"},"volume":{"_0":"b"}})", R"("disk4")", "{}"}) {
        EXPECT_THROW(Json::parse(text).get<FindingSubject>(), DecodingError) << text;
    }
}

TEST(Finding, MakeInfersDimensionAndIdJoinsRuleAndSubject) {
    const auto freeSpace = Finding::make("volume.freeSpace", Severity::warning, FindingSubject::volume("X"), "Data",
                                         "Running low on space", "detail");
    EXPECT_EQ(freeSpace.dimension, HealthDimension::usage);
    EXPECT_EQ(freeSpace.id(), "volume.freeSpace|volume:X");
    EXPECT_FALSE(freeSpace.recommendation);
    EXPECT_FALSE(freeSpace.evidence);
    EXPECT_FALSE(freeSpace.impact);
}

TEST(Finding, DecodedDimensionIsKeptNotReinferred) {
    Json j = Finding::make("volume.readOnly", Severity::warning, FindingSubject::volume("X"), "B", "t", "d");
    j["dimension"] = "connection";
    EXPECT_EQ(j.get<Finding>().dimension, HealthDimension::connection);
}

TEST(Finding, HashFollowsEquality) {
    const auto a = testing::finding("volume.readOnly", Severity::warning, "Backup");
    auto b = a;
    std::unordered_set<Finding> set{a, b};
    EXPECT_EQ(set.size(), 1u);
    b.evidence = "something";
    set.insert(b);
    EXPECT_EQ(set.size(), 2u);
}

}  // namespace
}  // namespace corvel
