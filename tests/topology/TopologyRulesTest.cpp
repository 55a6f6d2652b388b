#include "topology/LinkSpeed.h"
#include "topology/TopologyRules.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace corvel {
namespace {

using ::testing::ElementsAre;
using ::testing::Field;
using ::testing::HasSubstr;
using ::testing::IsEmpty;

PhysicalDisk disk(std::optional<bool> solidState = true) {
    PhysicalDisk result;
    result.id = "sdb";
    result.mediaName = "Drive";
    result.isSolidState = solidState;
    return result;
}

TopologyHop hop(const char* kind, std::optional<std::int64_t> speed, LinkTransport bus) {
    return TopologyHop::of({kind, kind, speed, {}, {}}, bus);
}

// A USB disk behind the root hub (and a hub when one is given), declaring `version`.
DiskPath usbPath(std::optional<std::int64_t> negotiated, std::optional<int> version,
                 std::optional<std::int64_t> hubSpeed = std::nullopt) {
    DiskPath path;
    path.diskID = "sdb";
    path.transport = LinkTransport::usb;
    auto port = hop("port", 10'000'000'000, LinkTransport::usb);
    port.node.capabilityBitsPerSecond = 10'000'000'000;
    path.hops.push_back(port);
    if (hubSpeed) path.hops.push_back(hop("hub", hubSpeed, LinkTransport::usb));
    auto device = hop("disk", negotiated, LinkTransport::usb);
    device.usbVersion = version;
    path.hops.push_back(device);
    return path;
}

DiskPath nvmePath(std::optional<PCIeLink> current, std::optional<PCIeLink> maximum,
                  std::optional<PCIeLink> portMaximum = std::nullopt) {
    DiskPath path;
    path.transport = LinkTransport::pcie;
    auto port = hop("port", std::nullopt, LinkTransport::pcie);
    port.pcieMaximum = portMaximum;
    path.hops.push_back(port);
    auto drive = hop("disk", current ? std::optional(current->bitsPerSecond()) : std::nullopt, LinkTransport::pcie);
    drive.pcieLink = current;
    drive.pcieMaximum = maximum;
    path.hops.push_back(drive);
    return path;
}

DiskPath sataPath(std::optional<std::int64_t> negotiated) {
    DiskPath path;
    path.transport = LinkTransport::sata;
    path.hops.push_back(hop("disk", negotiated, LinkTransport::sata));
    return path;
}

struct RuleCase {
    const char* name;
    DiskPath path;
    PhysicalDisk disk;
    const char* firedRule;  // nullptr: nothing fires
};

class TopologyRulesTest : public ::testing::TestWithParam<RuleCase> {};

TEST_P(TopologyRulesTest, FiresExactlyAtTheBoundary) {
    const auto& c = GetParam();
    const auto findings = TopologyRules::evaluate(c.path, c.disk);
    if (!c.firedRule) {
        EXPECT_THAT(findings, IsEmpty());
        return;
    }
    ASSERT_THAT(findings, ElementsAre(Field(&Finding::ruleID, c.firedRule)));
    EXPECT_EQ(findings[0].dimension, HealthDimension::connection);
    EXPECT_TRUE(findings[0].recommendation && findings[0].evidence && findings[0].impact);
}

const PCIeLink gen3x4{3, 4}, gen3x2{3, 2}, gen4x4{4, 4};

INSTANTIATE_TEST_SUITE_P(
    Boundaries, TopologyRulesTest,
    ::testing::Values(RuleCase{"usb3DeviceAt480", usbPath(480'000'000, 0x0320), disk(), "topology.usbSlowLink"},
                      RuleCase{"usb3DeviceAt5G", usbPath(5'000'000'000, 0x0320), disk(), nullptr},
                      RuleCase{"usb30DeviceAt12M", usbPath(12'000'000, 0x0300), disk(), "topology.usbSlowLink"},
                      RuleCase{"usb21DeviceAt480", usbPath(480'000'000, 0x0210), disk(), nullptr},
                      RuleCase{"usbVersionUnknown", usbPath(480'000'000, std::nullopt), disk(), nullptr},
                      RuleCase{"usbSpeedUnknown", usbPath(std::nullopt, 0x0320), disk(), nullptr},
                      RuleCase{"usbBehindSlowHub", usbPath(480'000'000, 0x0320, 480'000'000), disk(),
                               "topology.usbSlowLink"},
                      RuleCase{"pcieFewerLanes", nvmePath(gen3x2, gen3x4), disk(), "topology.pcieDowntrained"},
                      RuleCase{"pcieLowerGeneration", nvmePath(gen3x4, gen4x4), disk(), "topology.pcieDowntrained"},
                      RuleCase{"pcieFullLink", nvmePath(gen4x4, gen4x4), disk(), nullptr},
                      RuleCase{"pcieMaximumUnknown", nvmePath(gen3x2, std::nullopt), disk(), nullptr},
                      RuleCase{"pcieCurrentUnknown", nvmePath(std::nullopt, gen3x4), disk(), nullptr},
                      RuleCase{"sataSSDAt3G", sataPath(3'000'000'000), disk(true), "topology.sataSlowLink"},
                      RuleCase{"sataSSDAt1_5G", sataPath(1'500'000'000), disk(true), "topology.sataSlowLink"},
                      RuleCase{"sataSSDAt6G", sataPath(6'000'000'000), disk(true), nullptr},
                      RuleCase{"sataHardDiskAt3G", sataPath(3'000'000'000), disk(false), nullptr},
                      RuleCase{"sataMediumUnknown", sataPath(3'000'000'000), disk(std::nullopt), nullptr},
                      RuleCase{"sataSpeedUnknown", sataPath(std::nullopt), disk(true), nullptr}),
    [](const auto& param) { return std::string(param.param.name); });

TEST(TopologyRulesDetail, SlowUSBNamesTheHubOrTheCable) {
    const auto throughHub = TopologyRules::usbSlowLink(usbPath(480'000'000, 0x0320, 480'000'000), disk());
    ASSERT_EQ(throughHub.size(), 1u);
    EXPECT_THAT(throughHub[0].detail, HasSubstr("connected through hub, which runs at 480 Mb/s"));
    const auto direct = TopologyRules::usbSlowLink(usbPath(480'000'000, 0x0320), disk());
    ASSERT_EQ(direct.size(), 1u);
    EXPECT_THAT(direct[0].detail, HasSubstr("the port supports 10 Gb/s: the cable or an adapter"));
}

TEST(TopologyRulesDetail, DowntrainedDriveBlamesANarrowSlot) {
    const auto limitedBySlot = TopologyRules::pcieDowntrained(nvmePath(gen3x2, gen3x4, gen3x2), disk());
    ASSERT_EQ(limitedBySlot.size(), 1u);
    EXPECT_THAT(limitedBySlot[0].detail, HasSubstr("the slot, not the drive, sets the limit"));
    EXPECT_THAT(*limitedBySlot[0].impact, HasSubstr("about 50%"));
    const auto fullSlot = TopologyRules::pcieDowntrained(nvmePath(gen3x2, gen3x4, gen3x4), disk());
    ASSERT_EQ(fullSlot.size(), 1u);
    EXPECT_THAT(fullSlot[0].detail, ::testing::Not(HasSubstr("slot, not the drive")));
}

TEST(TopologyRulesDetail, ThunderboltDockUSBHubNeedsTunnelAndThunderboltHop) {
    DiskPath path;
    path.hops.push_back(hop("dock", 40'000'000'000, LinkTransport::thunderbolt));
    auto hub = hop("hub", 10'000'000'000, LinkTransport::usb);
    hub.isTunnelled = true;
    path.hops.push_back(hub);
    path.hops.push_back(hop("disk", 5'000'000'000, LinkTransport::usb));
    EXPECT_THAT(TopologyRules::evaluate(path, disk()),
                ElementsAre(Field(&Finding::ruleID, "topology.thunderboltUSBBridge")));
    path.hops[1].isTunnelled = false;
    EXPECT_THAT(TopologyRules::evaluate(path, disk()), IsEmpty());
}

TEST(LinkSpeedTest, DecodesWhatThePlatformsPrintAndNothingElse) {
    EXPECT_EQ(LinkSpeed::parseRate("480 Mb/s"), 480'000'000);
    EXPECT_EQ(LinkSpeed::parseRate("2.5 Gb/s"), 2'500'000'000);
    EXPECT_EQ(LinkSpeed::parseReported("Up to 40 Gb/s").upTo, 40'000'000'000);
    EXPECT_EQ(LinkSpeed::parseReported("Up to 40 Gb/s").current, std::nullopt);
    EXPECT_EQ(LinkSpeed::fromLinuxUSB("1.5"), 1'500'000);
    EXPECT_EQ(LinkSpeed::fromSATA("3.0 Gbps"), 3'000'000'000);
    EXPECT_EQ(LinkSpeed::usbVersion(" 3.20"), 0x0320);
    for (const char* bad : {"", "fast", "-5 Gb/s", "1..5 Gb/s", "Gb/s", "<unknown>"}) {
        EXPECT_EQ(LinkSpeed::parseRate(bad), std::nullopt) << bad;
        EXPECT_EQ(LinkSpeed::fromSATA(bad), std::nullopt) << bad;
        EXPECT_EQ(LinkSpeed::fromLinuxUSB(bad), std::nullopt) << bad;
    }
    EXPECT_EQ(LinkSpeed::fromRegistryUSBSpeed(0), std::nullopt);
    EXPECT_EQ(LinkSpeed::fromRegistryUSBSpeed(3), 480'000'000);
    EXPECT_EQ(LinkSpeed::fromRegistryDeviceSpeed(2), 480'000'000);
    EXPECT_EQ(linkSpeedText(480'000'000), "480 Mb/s");
    EXPECT_EQ(linkSpeedText(2'500'000'000), "2.5 Gb/s");
}

}  // namespace
}  // namespace corvel
