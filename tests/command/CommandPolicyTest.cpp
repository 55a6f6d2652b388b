#include "command/CommandError.h"
#include "command/CommandPolicy.h"
#include "command/DiskutilClient.h"
#include "command/SystemProfilerClient.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

using namespace corvel;
using ::testing::_;
using ::testing::ElementsAre;
using ::testing::Return;

namespace {
class MockRunner : public CommandRunning {
public:
    MOCK_METHOD(std::string, run, (const std::string&, const std::vector<std::string>&), (override));
};

CommandError refusal(const CommandPolicy& policy, const std::vector<std::string>& arguments, MockRunner& runner) {
    try {
        policy.run(arguments, runner);
    } catch (const CommandError& error) {
        return error;
    }
    ADD_FAILURE() << "policy let the command through";
    return CommandError::timedOut();
}
}  // namespace

TEST(CommandPolicy, DiskToolPrefixesAreExact) {
    const auto& policy = DiskutilClient::policy();
    EXPECT_EQ(policy.executable, "/usr/sbin/diskutil");
    for (const std::vector<std::string>& allowed : {std::vector<std::string>{"apfs", "list", "-plist"},
                                                    {"list", "-plist", "physical"},
                                                    {"info", "-plist", "disk0"}})
        EXPECT_TRUE(policy.permits(allowed)) << allowed.front();
    // Exact and case-sensitive: "List" is not "list".
    for (const std::vector<std::string>& refused : {std::vector<std::string>{"apfs", "deleteVolume", "disk3s5"},
                                                    {"apfs"},
                                                    {"eraseDisk", "APFS", "X", "disk4"},
                                                    {"List"},
                                                    {}})
        EXPECT_FALSE(policy.permits(refused)) << ::testing::PrintToString(refused);
}

TEST(CommandPolicy, AnEmptyPrefixPermitsNothing) {
    const CommandPolicy policy{"/bin/true", {{}, {"ok"}}};
    EXPECT_FALSE(policy.permits({"anything"}));
    EXPECT_TRUE(policy.permits({"ok", "more"}));
}

TEST(CommandPolicy, RefusalStartsNothingAndNamesTheVerb) {
    MockRunner runner;
    EXPECT_CALL(runner, run(_, _)).Times(0);
    const auto& policy = DiskutilClient::policy();

    const auto erase = refusal(policy, {"eraseDisk", "JHFS+", "Untitled", "disk4"}, runner);
    EXPECT_EQ(erase, CommandError::notAllowed("eraseDisk"));
    EXPECT_EQ(erase.description(), "Command 'eraseDisk' is not permitted (read-only policy)");

    EXPECT_EQ(refusal(policy, {}, runner), CommandError::notAllowed(""));
    EXPECT_EQ(refusal(SystemProfilerClient::policy(), {"SPNetworkDataType", "-json"}, runner),
              CommandError::notAllowed("SPNetworkDataType"));
}

TEST(CommandPolicy, PermittedCommandsReachTheRunnerAndErrorsPassThrough) {
    MockRunner runner;
    EXPECT_CALL(runner, run("/usr/sbin/diskutil", ElementsAre("apfs", "list", "-plist"))).WillOnce(Return("plist"));
    EXPECT_CALL(runner, run("/usr/sbin/diskutil", ElementsAre("info", "-plist", "disk5")))
        .WillOnce([](const auto&, const auto&) -> std::string { throw CommandError::timedOut(); });
    DiskutilClient client(runner);
    EXPECT_EQ(client.apfsList(), "plist");
    EXPECT_THROW(client.info("disk5"), CommandError);
}

TEST(CommandPolicy, HardwareReportsAreTheThreeDocumentedOnes) {
    const auto& policy = SystemProfilerClient::policy();
    EXPECT_TRUE(policy.permits({"SPUSBHostDataType", "-json"}));
    EXPECT_TRUE(
        policy.permits({"SPHardwareDataType", "SPPowerDataType", "SPDisplaysDataType", "SPUSBHostDataType", "-json"}));
    EXPECT_FALSE(policy.permits({"SPHardwareDataType", "-json"}));
    MockRunner runner;
    EXPECT_CALL(runner, run("/usr/sbin/system_profiler", ElementsAre("SPThunderboltDataType", "-json")))
        .WillOnce(Return("{}"));
    EXPECT_EQ(SystemProfilerClient(runner).thunderbolt(), "{}");
}

TEST(CommandError, ComparesByCaseAndPayload) {
    EXPECT_EQ(CommandError::failed(1, "x"), CommandError::failed(1, "x"));
    EXPECT_NE(CommandError::failed(1, "x"), CommandError::failed(2, "x"));
    EXPECT_NE(CommandError::notAllowed("x"), CommandError::launchFailed("x"));
    EXPECT_STREQ(CommandError::launchFailed("boom").what(), "Could not launch command: boom");
}
