#include "common/AtomicFile.h"
#include "diagnostics/CorvelSettings.h"
#include "diagnostics/SettingsEditor.h"
#include "diagnostics/SettingsStore.h"
#include "support/Golden.h"
#include "support/TemporaryFolder.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>

namespace corvel {
namespace {

namespace fs = std::filesystem;
const fs::path home = "/home/me";

// Every default, thresholds included, in one reviewed file; and the defaults are valid.
TEST(CorvelSettings, DefaultsMatchTheReviewedCopy) {
    const auto settings = CorvelSettings::defaults(home);
    EXPECT_FALSE(settings.validationProblem());
    testing::expectGolden("diagnostics/default-settings.json", settings);
}

TEST(CorvelSettings, WrongTypesAreDecodingErrors) {
    for (const char* text : {R"({"intervalMinutes": "five"})", R"({"verifiedVolumes": {"X": "yesterday"}})",
                             R"({"verifiedVolumes": []})", R"({"thresholds": {"warningFreeFraction": "low"}})",
                             R"({"expectedVolumes": [{"volumeID": "X"}]})", R"([1, 2])"}) {
        auto settings = CorvelSettings::defaults(home);
        EXPECT_THROW(from_json(Json::parse(text), settings), DecodingError) << text;
    }
}

TEST(SettingsEditor, ChangesOneKeyOfEachKind) {
    const auto base = CorvelSettings::defaults(home);
    using SettingsEditor::apply;
    EXPECT_FALSE(apply(base, "monitoringEnabled", "false", home).monitoringEnabled);
    EXPECT_FALSE(apply(base, "notificationsEnabled", "off", home).notificationsEnabled);
    EXPECT_EQ(apply(base, "intervalMinutes", "10", home).intervalMinutes, 10);
    EXPECT_EQ(apply(base, "agentIntervalMinutes", " 30 ", home).agentIntervalMinutes, 30);
    EXPECT_EQ(apply(base, "thresholds.warningFreeFraction", "0.2", home).thresholds.warningFreeFraction, 0.2);
    EXPECT_EQ(apply(base, "thresholds.warningFreeFraction", "20%", home).thresholds.warningFreeFraction, 0.2);
    EXPECT_EQ(apply(base, "thresholds.warningFreeBytes", "50GB", home).thresholds.warningFreeBytes, 50'000'000'000);
    EXPECT_EQ(apply(base, "thresholds.warningFreeBytes", "1.5 TB", home).thresholds.warningFreeBytes,
              1'500'000'000'000);
    EXPECT_EQ(apply(base, "thresholds.criticalFreeBytes", "5000000000", home).thresholds.criticalFreeBytes,
              5'000'000'000);
    EXPECT_EQ(apply(base, "thresholds.nvmeWearWarningPercent", "90", home).thresholds.nvmeWearWarningPercent, 90);
    EXPECT_EQ(apply(base, "thresholds.temperatureWarningCelsius", "65.5", home).thresholds.temperatureWarningCelsius,
              65.5);
    EXPECT_EQ(apply(base, "projectRoots", "~/work:/srv/src", home).projectRoots,
              (std::vector<std::string>{"/home/me/work", "/srv/src"}));
    EXPECT_EQ(apply(base, "customFootprintPaths", R"(["/a:b", "~"])", home).customFootprintPaths,
              (std::vector<std::string>{"/a:b", "/home/me"}));
    EXPECT_TRUE(apply(base, "projectRoots", "", home).projectRoots.empty());
    EXPECT_EQ(apply(base, "workspace", "~/ws", home).workspace, "/home/me/ws");
    EXPECT_FALSE(apply(apply(base, "workspace", "/ws", home), "workspace", "none", home).workspace);

    const auto expected =
        apply(base, "expectedVolumes", R"([{"volumeID":"U","name":"Work","reason":"the workspace"}])", home);
    ASSERT_EQ(expected.expectedVolumes.size(), 1u);
    EXPECT_EQ(expected.expectedVolumes[0].name, "Work");

    const auto verified = apply(base, "verifiedVolumes.UUID-1", "2026-11-02T09:30:00Z", home);
    EXPECT_EQ(verified.verifiedVolumes.at("UUID-1"), *ISO8601::parse("2026-11-02T09:30:00Z"));
    EXPECT_TRUE(apply(verified, "verifiedVolumes.UUID-1", "none", home).verifiedVolumes.empty());
}

void expectRefused(std::string_view key, std::string_view value, std::string_view messagePart) {
    try {
        SettingsEditor::apply(CorvelSettings::defaults(home), key, value, home);
        ADD_FAILURE() << key << " accepted '" << value << "'";
    } catch (const SettingsError& error) {
        EXPECT_THAT(error.what(), ::testing::HasSubstr(std::string(messagePart))) << key << " '" << value << "'";
    }
}

TEST(SettingsEditor, RefusesUnknownKeysAndBadValuesNamingThem) {
    expectRefused("intervalMinute", "5", "unknown setting 'intervalMinute'");
    expectRefused("thresholds", "{}", "unknown setting 'thresholds'");
    expectRefused("verifiedVolumes.", "2026-01-01", "unknown setting");
    expectRefused("intervalMinutes", "five", "invalid value 'five' for intervalMinutes");
    expectRefused("intervalMinutes", "5.5", "invalid value '5.5' for intervalMinutes");
    expectRefused("intervalMinutes", "0", "intervalMinutes must be from 1 to 1440");
    expectRefused("agentIntervalMinutes", "99999999999", "invalid value");
    expectRefused("monitoringEnabled", "maybe", "expected true or false");
    expectRefused("thresholds.warningFreeFraction", "1.5", "warningFreeFraction must be a fraction");
    expectRefused("thresholds.warningFreeFraction", "nan", "invalid value 'nan'");
    expectRefused("thresholds.criticalFreeFraction", "0.3", "must not be above warningFreeFraction");
    expectRefused("thresholds.warningFreeBytes", "30 GiB", "invalid value '30 GiB'");
    expectRefused("thresholds.warningFreeBytes", "-1", "invalid value '-1'");
    expectRefused("thresholds.criticalFreeBytes", "40GB", "must not be above warningFreeBytes");
    expectRefused("thresholds.nvmeWearWarningPercent", "0", "nvmeWearWarningPercent must be from 1");
    expectRefused("thresholds.temperatureWarningCelsius", "-3", "temperatureWarningCelsius must be above 0");
    expectRefused("projectRoots", "relative/path", "projectRoots must hold absolute paths");
    expectRefused("projectRoots", "[1,2]", "invalid value '[1,2]' for projectRoots");
    expectRefused("workspace", "ws", "workspace must be an absolute path");
    expectRefused("expectedVolumes", R"([{"name":"x"}])", "invalid value");
    expectRefused("verifiedVolumes.X", "last week", "ISO 8601");
    expectRefused("workspace", "/home/me/bad\xff\xfename", "invalid value '/home/me/bad\\xff\\xfename' for workspace");
}

TEST(SettingsEditor, EntriesListEveryKeyOnce) {
    auto settings = CorvelSettings::defaults(home);
    settings.verifiedVolumes["A"] = *ISO8601::parse("2026-11-02T09:30:00Z");
    const auto rows = SettingsEditor::entries(settings);
    std::vector<std::string> keys;
    for (const auto& [key, text] : rows) keys.push_back(key);
    for (const auto& info : SettingsEditor::keys()) {
        if (info.key.rfind("verifiedVolumes.", 0) == 0) continue;
        EXPECT_EQ(std::count(keys.begin(), keys.end(), info.key), 1) << info.key;
    }
    EXPECT_EQ(rows.back(), (std::pair<std::string, std::string>{"verifiedVolumes.A", "2026-11-02T09:30:00Z"}));
}

class SettingsStoreTest : public ::testing::Test {
protected:
    void writeFile(const std::string& text) { folder_.write("settings.json", text); }
    std::string readFile() const { return AtomicFile::read(dir_ / "settings.json").value_or("<missing>"); }

    testing::TemporaryFolder folder_;
    const fs::path dir_ = folder_.root();
};

TEST_F(SettingsStoreTest, MissingFileReadsAsDefaultsWithoutWarning) {
    SettingsStore store(dir_, home);
    EXPECT_EQ(store.path(), dir_ / "settings.json");
    const auto loaded = store.load();
    EXPECT_EQ(loaded.settings, CorvelSettings::defaults(home));
    EXPECT_FALSE(loaded.fromFile);
    EXPECT_FALSE(loaded.warning);
    EXPECT_FALSE(fs::exists(store.path()));  // reading never creates the file
}

// Every field away from its default, through the file and back.
TEST_F(SettingsStoreTest, SaveThenLoadRoundTripsEveryField) {
    auto settings = SettingsEditor::apply(CorvelSettings::defaults(home), "intervalMinutes", "12", home);
    settings.monitoringEnabled = false;
    settings.thresholds.warningFreeBytes = 50'000'000'000;
    settings.customFootprintPaths = {"/opt/sdk"};
    settings.workspace = "/Volumes/Work";
    settings.verifiedVolumes["UUID-1"] = *ISO8601::parse("2026-11-02T09:30:00Z");
    settings.expectedVolumes.push_back({"UUID-1", "Work", "the workspace"});
    SettingsStore(dir_ / "nested", home).save(settings);  // missing folders are created
    const auto loaded = SettingsStore(dir_ / "nested", home).load();
    EXPECT_TRUE(loaded.fromFile);
    EXPECT_EQ(loaded.settings, settings);
    const auto j = Json::parse(AtomicFile::read(dir_ / "nested/settings.json").value_or("{}"));
    EXPECT_EQ(j["verifiedVolumes"]["UUID-1"], "2026-11-02T09:30:00Z");
    EXPECT_EQ(j["thresholds"]["warningFreeBytes"], 50'000'000'000);
    CorvelSettings decoded;  // every field read back, none left from the defaults
    from_json(j, decoded);
    EXPECT_EQ(decoded, settings);
    settings.workspace.reset();
    EXPECT_FALSE(Json(settings).contains("workspace"));
}

TEST_F(SettingsStoreTest, PartialFileTakesDefaultsForMissingKeysNestedOnesToo) {
    writeFile(R"({"notificationsEnabled": false, "workspace": "/w", "thresholds": {"warningFreeFraction": 0.25}})");
    const auto loaded = SettingsStore(dir_, home).load();
    auto expected = CorvelSettings::defaults(home);
    expected.notificationsEnabled = false;
    expected.workspace = "/w";
    expected.thresholds.warningFreeFraction = 0.25;
    EXPECT_EQ(loaded.settings, expected);
    EXPECT_FALSE(loaded.warning);
}

TEST_F(SettingsStoreTest, UnreadableFileReadsAsDefaultsReportedOnceAndKeptUntilNextChange) {
    const std::string corrupt = R"({"intervalMinutes": 7,)";
    writeFile(corrupt);
    SettingsStore store(dir_, home);

    const auto first = store.load();
    EXPECT_EQ(first.settings, CorvelSettings::defaults(home));
    EXPECT_FALSE(first.fromFile);
    ASSERT_TRUE(first.warning);
    EXPECT_THAT(*first.warning, ::testing::HasSubstr((dir_ / "settings.json").string()));

    const auto second = store.load();
    EXPECT_EQ(second.settings, CorvelSettings::defaults(home));
    EXPECT_FALSE(second.warning);
    EXPECT_EQ(readFile(), corrupt);  // left for the user to inspect

    store.save(SettingsEditor::apply(second.settings, "intervalMinutes", "8", home));
    const auto third = store.load();
    EXPECT_FALSE(third.warning);
    EXPECT_EQ(third.settings.intervalMinutes, 8);
    // What the user had is kept beside the new file, not lost.
    std::ifstream kept(dir_ / "settings.json.unreadable");
    EXPECT_EQ(std::string(std::istreambuf_iterator<char>(kept), {}), corrupt);
}

TEST_F(SettingsStoreTest, WrongTypedOrOutOfRangeValuesCountAsUnreadable) {
    for (const char* text : {R"({"intervalMinutes": "soon"})", R"({"intervalMinutes": 0})", R"("text")"}) {
        writeFile(text);
        const auto loaded = SettingsStore(dir_, home).load();
        EXPECT_EQ(loaded.settings, CorvelSettings::defaults(home)) << text;
        ASSERT_TRUE(loaded.warning) << text;
        EXPECT_EQ(readFile(), text);
    }
}

TEST_F(SettingsStoreTest, AFileThatCannotBeReadIsReportedNotThrown) {
    fs::create_directories(dir_ / "settings.json");  // a folder where the file should be
    SettingsStore store(dir_, home);
    const auto loaded = store.load();
    EXPECT_EQ(loaded.settings, CorvelSettings::defaults(home));
    EXPECT_TRUE(loaded.warning);
}

}  // namespace
}  // namespace corvel
