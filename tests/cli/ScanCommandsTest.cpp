// `velmora scan`, driven through the real binary on a temporary folder.
#include <gtest/gtest.h>

#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <string>

#include "common/Json.h"

namespace corvel {
namespace {

namespace fs = std::filesystem;

struct Outcome {
    int status = -1;
    std::string out;
    std::string err;
};

class ScanCommands : public ::testing::Test {
protected:
    void SetUp() override {
        std::string pattern = (fs::temp_directory_path() / "velmora-scancli-XXXXXX").string();
        ASSERT_NE(mkdtemp(pattern.data()), nullptr);
        root_ = pattern;
        fs::create_directories(root_ / "tree");
        fs::create_directories(root_ / "data");
    }
    void TearDown() override { fs::remove_all(root_); }

    std::string path(const std::string& relative) const { return (root_ / relative).string(); }

    void write(const std::string& relative, const std::string& contents) const {
        fs::create_directories((root_ / relative).parent_path());
        std::ofstream(root_ / relative, std::ios::binary) << contents;
    }

    Outcome velmora(const std::string& arguments) const {
        const std::string errFile = path("stderr.txt");
        const std::string command = std::string(CORVEL_VELMORA_BINARY) + " --data-dir '" + path("data") + "' " +
                                    arguments + " 2>'" + errFile + "'";
        Outcome outcome;
        FILE* pipe = ::popen(command.c_str(), "r");
        if (!pipe) return outcome;
        std::array<char, 4096> buffer{};
        std::size_t got = 0;
        while ((got = std::fread(buffer.data(), 1, buffer.size(), pipe)) > 0) outcome.out.append(buffer.data(), got);
        const int raw = ::pclose(pipe);
        outcome.status = WIFEXITED(raw) ? WEXITSTATUS(raw) : -1;
        std::ifstream err(errFile);
        outcome.err.assign(std::istreambuf_iterator<char>(err), {});
        return outcome;
    }

    fs::path root_;
};

TEST_F(ScanCommands, JsonIsOneDocumentWithTheTreeAndTheReportAndTheSummaryIsSaved) {
    const std::string payload(1'500'000, 'd');
    write("tree/a/one.bin", payload);
    write("tree/b/two.bin", payload);
    write("tree/node_modules/x.js", "module");
    const Outcome outcome = velmora("scan --json --depth 1 --exclude node_modules '" + path("tree") + "'");
    ASSERT_EQ(outcome.status, 0) << outcome.err;
    EXPECT_TRUE(outcome.err.empty()) << outcome.err;  // no progress line without a terminal
    const Json document = Json::parse(outcome.out);
    EXPECT_EQ(document["tree"]["path"], path("tree"));
    EXPECT_EQ(document["tree"]["allocatedBytes"], document["report"]["allocatedBytes"]);
    EXPECT_EQ(document["report"]["fileCount"], 2);
    EXPECT_EQ(document["report"]["duplicates"].size(), 1u);
    EXPECT_EQ(document["report"]["wasCancelled"], false);
    for (const auto& child : document["tree"]["children"]) EXPECT_TRUE(child["children"].empty());

    std::ifstream summaryFile(path("data/space-summary.json"));
    ASSERT_TRUE(summaryFile.good());
    const Json summary = Json::parse(summaryFile);
    EXPECT_EQ(summary["root"], path("tree"));
    EXPECT_FALSE(summary["topConsumers"].empty());
}

TEST_F(ScanCommands, HumanOutputShowsEverySection) {
    write("tree/dev/main.cpp", std::string(20000, 'c'));
    const Outcome outcome = velmora("scan '" + path("tree") + "'");
    ASSERT_EQ(outcome.status, 0) << outcome.err;
    for (const char* section : {"Biggest folders", "Largest files", "Duplicate candidates", "By category",
                                "Hard links save", "Clones share", "Unreadable folders: 0"})
        EXPECT_NE(outcome.out.find(section), std::string::npos) << section << "\n" << outcome.out;
    EXPECT_NE(outcome.out.find("dev/"), std::string::npos);
    EXPECT_EQ(outcome.out.find("PARTIAL"), std::string::npos);
}

TEST_F(ScanCommands, BadInputIsOneLineNamingIt) {
    const Outcome missing = velmora("scan '" + path("nowhere") + "'");
    EXPECT_EQ(missing.status, 2);
    EXPECT_NE(missing.err.find(path("nowhere")), std::string::npos) << missing.err;
    write("plain-file", "x");
    EXPECT_EQ(velmora("scan '" + path("plain-file") + "'").status, 2);
    EXPECT_EQ(velmora("scan --depth -1 '" + path("tree") + "'").status, 2);
    EXPECT_EQ(velmora("scan --top 0 '" + path("tree") + "'").status, 2);
}

}  // namespace
}  // namespace corvel
