#include "StorageTestSupport.h"
#include "storage/DiskutilParser.h"
#include "storage/PropertyList.h"

#include <gtest/gtest.h>

using namespace corvel;
using namespace corvel::testing;

namespace {

const char* everyTypeXML = R"(<?xml version="1.0" encoding="UTF-8"?>
<!DOCTYPE plist PUBLIC "-//Apple//DTD PLIST 1.0//EN" "http://www.apple.com/DTDs/PropertyList-1.0.dtd">
<plist version="1.0">
<dict>
	<key>Flag</key><true/>
	<key>Off</key><false/>
	<key>Size</key><integer>994662584320</integer>
	<key>Negative</key><integer>-42</integer>
	<key>Ratio</key><real>2.5</real>
	<key>Name</key><string>Macintosh HD &amp; Data</string>
	<key>Blob</key><data>AAEC</data>
	<key>When</key><date>2026-11-02T09:30:00Z</date>
	<key>List</key><array><string>a</string><integer>1</integer></array>
	<key>Nested</key><dict><key>Inner</key><string>x</string></dict>
</dict>
</plist>
)";

}  // namespace

TEST(PropertyList, ReadsEveryXMLTypeWithItsOwnType) {
    PropertyListValue root = PropertyList::parse(everyTypeXML);
    ASSERT_TRUE(root.isDictionary());
    EXPECT_EQ(root.find("Flag")->asBoolean(), true);
    EXPECT_EQ(root.find("Off")->asBoolean(), false);
    EXPECT_EQ(root.find("Size")->asInteger(), 994662584320);
    EXPECT_EQ(root.find("Negative")->asInteger(), -42);
    EXPECT_EQ(root.find("Ratio")->asReal(), 2.5);
    EXPECT_EQ(*root.find("Name")->asString(), "Macintosh HD & Data");
    EXPECT_EQ(*root.find("Blob")->asData(), std::string("\x00\x01\x02", 3));
    EXPECT_EQ(root.find("When")->asDate(), ISO8601::parse("2026-11-02T09:30:00Z"));
    ASSERT_NE(root.find("List")->asArray(), nullptr);
    EXPECT_EQ(root.find("List")->asArray()->size(), 2u);
    EXPECT_EQ(*root.find("Nested")->find("Inner")->asString(), "x");
    // A typed read of another type is absent, not a conversion.
    EXPECT_FALSE(root.find("Size")->asReal());
    EXPECT_EQ(root.find("Flag")->asString(), nullptr);
    EXPECT_EQ(root.find("Missing"), nullptr);
}

TEST(PropertyList, BinaryAndXMLRoundTripToTheSameValue) {
    PropertyListValue original = PropertyList::parse(everyTypeXML);
    for (auto format : {PropertyList::Format::binary, PropertyList::Format::xml}) {
        std::string bytes = PropertyList::encode(original, format);
        EXPECT_EQ(PropertyList::parse(bytes), original);
    }
    EXPECT_EQ(PropertyList::encode(original, PropertyList::Format::binary).substr(0, 8), "bplist00");
}

TEST(PropertyList, DiskToolOutputReadsTheSameInBinaryForm) {
    const auto text = readFixture("machines/mac-studio-external-usb/list-physical.plist");
    std::string binary = PropertyList::encode(PropertyList::parse(text), PropertyList::Format::binary);
    EXPECT_EQ(DiskutilParser::parseList(binary), DiskutilParser::parseList(text));
}

TEST(PropertyList, RejectsWhatIsNotAPropertyList) {
    for (std::string bad :
         {std::string(), std::string("not a plist"), std::string("{\"json\": true}"),
          std::string("<plist version=\"1.0\"><dict><key>A</key>"), std::string("bplist00\x01\x02", 10)}) {
        EXPECT_THROW(PropertyList::parse(bad), PropertyListError) << bad;
    }
}

// A binary dictionary {"a\0b" (UTF-16): "x"}: the library asserts on such a key and takes the whole
// process down, so the reader must refuse it first. An ASCII text with a NUL is refused the same way.
std::string binaryWithKey(std::string key) {
    std::string objects = std::string("\xD1\x01\x02", 3) + key + std::string("\x51x", 2);
    const char offsets[3] = {8, 11, static_cast<char>(11 + key.size())};
    std::string trailer(32, '\0');
    trailer[6] = trailer[7] = 1;
    trailer[15] = 3;
    trailer[31] = static_cast<char>(8 + objects.size());
    return "bplist00" + objects + std::string(offsets, 3) + trailer;
}

TEST(PropertyList, ATextHoldingANulCharacterIsRefusedNotFatal) {
    const std::string utf16Key("\x63\x00\x61\x00\x00\x00\x62", 7);
    const std::string asciiKey("\x53\x61\x00\x62", 4);
    EXPECT_THROW(PropertyList::parse(binaryWithKey(utf16Key)), PropertyListError);
    EXPECT_THROW(PropertyList::parse(binaryWithKey(asciiKey)), PropertyListError);
    const std::string cleanKey("\x53\x61\x62\x63", 4);
    const auto clean = PropertyList::parse(binaryWithKey(cleanKey));
    ASSERT_NE(clean.find("abc"), nullptr);
    EXPECT_EQ(*clean.find("abc"), PropertyListValue::string("x"));
}

// Output cut off mid-stream (a tool killed at its time-out) must never crash the reader: every
// prefix either reads or fails with an error.
TEST(PropertyList, EveryTruncationOfRealOutputFailsCleanly) {
    const auto text = readFixture("machines/macbook-air-m2/info-root.plist");
    const std::string binary = PropertyList::encode(PropertyList::parse(text), PropertyList::Format::binary);
    int rejected = 0;
    for (const std::string* document : {&text, &binary}) {
        for (std::size_t length = 0; length < document->size(); length += 7) {
            try {
                (void)DiskutilParser::parseVolumeInfo(std::string_view(*document).substr(0, length));
            } catch (const PropertyListError&) {
                ++rejected;
            } catch (const DiskutilParseError&) {
                ++rejected;
            }
        }
    }
    EXPECT_GT(rejected, 0);
}

TEST(PropertyList, BuildersMakeComparableValues) {
    PropertyListValue a = dict();
    a.set("Name", str("disk0")).set("Size", num(5));
    PropertyListValue b = dict();
    b.set("Size", num(5)).set("Name", str("disk0"));
    EXPECT_EQ(a, b);  // dictionaries compare by content, not insertion order
    b.set("Size", num(6));
    EXPECT_NE(a, b);
}

TEST(PropertyList, ADocumentNestedAHundredThousandLevelsDeepIsRefusedWithoutExhaustingTheStack) {
    constexpr int levels = 100000;
    std::string xml = R"(<?xml version="1.0" encoding="UTF-8"?><plist version="1.0">)";
    for (int i = 0; i < levels; ++i) xml += "<array>";
    for (int i = 0; i < levels; ++i) xml += "</array>";
    xml += "</plist>";
    EXPECT_THROW(PropertyList::parse(xml), PropertyListError);
}
