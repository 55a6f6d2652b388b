// The hardware-report tool's USB host and Thunderbolt reports, parsed from real captures.
#include "support/TemporaryFolder.h"
#include "topology/ThunderboltReport.h"
#include "topology/USBHostReport.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace corvel {
namespace {

using ::testing::Contains;
using ::testing::Field;
using ::testing::Pointee;

TEST(ReportParsing, USBHostReportKeepsTheSlowFlashDriveAndItsBus) {
    const auto buses =
        USBHostReport::parse(testing::readFixture("reports/sp-usbhost-applesilicon-tahoe-flashdrive-480.json"));
    ASSERT_FALSE(buses.empty());
    const auto devices = USBHostReport::devices(buses);
    EXPECT_THAT(devices, Contains(Pointee(AllOf(Field(&USBHostNode::name, "USB 3.2.1 FD"),
                                                Field(&USBHostNode::linkBitsPerSecond, 480'000'000)))));
    // Buses are not devices.
    EXPECT_THAT(devices, ::testing::Not(Contains(Pointee(Field(&USBHostNode::name, "USB 3.1 Bus")))));
}

TEST(ReportParsing, ThunderboltReportTellsUpLinksFromReceptacles) {
    const auto buses =
        ThunderboltReport::parse(testing::readFixture("reports/sp-thunderbolt-applesilicon-tahoe-tb4dock.json"));
    ASSERT_EQ(buses.size(), 3u);
    const auto connected = ThunderboltReport::connectedDevices(buses);
    ASSERT_EQ(connected.size(), 1u);
    const auto* dock = connected[0].chain.back();
    EXPECT_EQ(dock->name, "Thunderbolt 4 Docking Station (8-in-1)");
    EXPECT_EQ(dock->mode, "usb_four");
    // "40 Gb/s" on the upstream receptacle is the dock's link; "Up to 40 Gb/s" on the others is only
    // what they could do, with nothing connected.
    EXPECT_EQ(dock->linkBitsPerSecond, 40'000'000'000);
    ASSERT_EQ(dock->ports.size(), 3u);
    EXPECT_THAT(dock->ports, ::testing::Each(AllOf(Field(&ThunderboltPort::linkBitsPerSecond, std::nullopt),
                                                   Field(&ThunderboltPort::capabilityBitsPerSecond, 40'000'000'000),
                                                   Field(&ThunderboltPort::isConnected, false))));
}

TEST(ReportParsing, NotAReportIsAnErrorButOddValuesAreNot) {
    EXPECT_THROW(USBHostReport::parse("not json"), DecodingError);
    EXPECT_THROW(ThunderboltReport::parse("{}"), DecodingError);
    const auto buses = USBHostReport::parse(
        R"({"SPUSBHostDataType": [{"_name": "USB 3.1 Bus", "_items": [{"_name": "Disk", "USBDeviceKeyLinkSpeed": "fast", "x": 1}, {"USBDeviceKeyLinkSpeed": "5 Gb/s"}]}]})");
    const auto devices = USBHostReport::devices(buses);
    ASSERT_EQ(devices.size(), 1u);
    EXPECT_EQ(devices[0]->linkBitsPerSecond, std::nullopt);
}

}  // namespace
}  // namespace corvel
