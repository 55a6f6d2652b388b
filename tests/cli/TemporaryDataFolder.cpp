// Every velmora run started by these tests inherits a data folder of its own, so that no test
// reads or writes the settings and scan summary of the person running the suite.
#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <string>

namespace {

class TemporaryDataFolder : public ::testing::Environment {
public:
    void SetUp() override {
        std::string pattern = (std::filesystem::temp_directory_path() / "velmora-cli-data-XXXXXX").string();
        ASSERT_NE(::mkdtemp(pattern.data()), nullptr);
        folder_ = pattern;
        ::setenv("VELMORA_DATA_DIR", folder_.c_str(), 1);
    }
    void TearDown() override {
        std::error_code ec;
        std::filesystem::remove_all(folder_, ec);
    }

private:
    std::string folder_;
};

[[maybe_unused]] ::testing::Environment* const dataFolder =
    ::testing::AddGlobalTestEnvironment(new TemporaryDataFolder);

}  // namespace
