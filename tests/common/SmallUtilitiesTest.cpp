#include "common/DataFolder.h"
#include "common/SHA256.h"
#include "common/Text.h"
#include "common/UUID.h"

#include <gtest/gtest.h>

#include <regex>
#include <set>

using namespace corvel;

TEST(SHA256, MatchesKnownDigests) {
    EXPECT_EQ(SHA256::hex(""), "e3b0c44298fc1c149afbf4c8996fb92427ae41e4649b934ca495991b7852b855");
    EXPECT_EQ(SHA256::hex("abc"), "ba7816bf8f01cfea414140de5dae2223b00361a396177a9cb410ff61f20015ad");
}

TEST(UUID, RandomVersionFourInCanonicalText) {
    const std::regex shape("[0-9A-F]{8}-[0-9A-F]{4}-4[0-9A-F]{3}-[89AB][0-9A-F]{3}-[0-9A-F]{12}");
    std::set<std::string> seen;
    for (int i = 0; i < 50; ++i) {
        const auto id = UUID::random();
        EXPECT_TRUE(std::regex_match(id, shape)) << id;
        seen.insert(id);
    }
    EXPECT_EQ(seen.size(), 50u);
}

TEST(Text, TrimSplitJoinReplace) {
    EXPECT_EQ(trim(" \t value \r\n"), "value");
    EXPECT_EQ(trim("   "), "");
    EXPECT_EQ(split("a,,b", ','), (std::vector<std::string>{"a", "", "b"}));
    EXPECT_EQ(join({"a", "b", "c"}, " · "), "a · b · c");
    EXPECT_EQ(replaceAll("APPLE SSD Media Media", " Media", ""), "APPLE SSD");
    EXPECT_EQ(toUpper("apfs"), "APFS");
    EXPECT_EQ(toLower("About to Fail"), "about to fail");
}

TEST(DataFolder, FollowsEachPlatformsConvention) {
    EXPECT_EQ(defaultDataFolder(Platform::macos, "/Users/me", "/ignored"),
              "/Users/me/Library/Application Support/Velmora");
    EXPECT_EQ(defaultDataFolder(Platform::linux, "/home/me", std::nullopt), "/home/me/.local/share/velmora");
    EXPECT_EQ(defaultDataFolder(Platform::linux, "/home/me", "/data/xdg"), "/data/xdg/velmora");
    // A relative XDG value is invalid and ignored.
    EXPECT_EQ(defaultDataFolder(Platform::linux, "/home/me", "relative"), "/home/me/.local/share/velmora");
}

namespace {

TEST(TerminalSafe, ControlCharactersAndBrokenUTF8BecomeVisible) {
    const struct {
        std::string raw;
        std::string shown;
        bool validUTF8 = true;
    } cases[] = {
        {"plain name.txt", "plain name.txt"},
        {"caf\xC3\xA9 \xF0\x9F\x93\x81", "caf\xC3\xA9 \xF0\x9F\x93\x81"},  // accents and emoji stay
        {"evil\x1B[31mred", "evil\\x1b[31mred"},                           // escape sequence
        {"two\nlines\rhidden\tcol", "two\\nlines\\rhidden\\tcol"},
        {"del\x7F", "del\\x7f"},
        {"c1\xC2\x9B"
         "2J",
         "c1\\xc2\\x9b2J"},  // a C1 CSI
        {"bad\xFF\xFE", "bad\\xff\\xfe", false},
        {"overlong\xC0\xAF", "overlong\\xc0\\xaf", false},
        {"cut\xE2\x82", "cut\\xe2\\x82", false},
        {"back\\slash", "back\\\\slash"},  // so that "\x1b" typed in a name is told apart
        {std::string("nul\0x", 5), "nul\\x00x"},
    };
    for (const auto& c : cases) {
        EXPECT_EQ(terminalSafe(c.raw), c.shown) << c.raw;
        EXPECT_EQ(isValidUTF8(c.raw), c.validUTF8) << c.shown;
    }
}

TEST(RepairedUTF8, KeepsValidTextAndReplacesEachBadByte) {
    const std::string replacement = "\xEF\xBF\xBD";
    EXPECT_EQ(repairedUTF8("plain"), "plain");
    EXPECT_EQ(repairedUTF8("Gr\xC3\xBC\xC3\x9F"
                           "e \xF0\x9F\x93\x81"),
              "Gr\xC3\xBC\xC3\x9F"
              "e \xF0\x9F\x93\x81");
    EXPECT_EQ(repairedUTF8("caf\xE9"), "caf" + replacement);
    EXPECT_EQ(repairedUTF8("\xE2\x82"), replacement + replacement);  // cut short
    EXPECT_EQ(repairedUTF8("\xC0\x80"), replacement + replacement);  // overlong
    EXPECT_EQ(repairedUTF8("\xED\xA0\x80"),                          // a surrogate half
              replacement + replacement + replacement);
    EXPECT_EQ(repairedUTF8("\xF4\x90\x80\x80x"),  // above U+10FFFF
              replacement + replacement + replacement + replacement + "x");
}

}  // namespace
