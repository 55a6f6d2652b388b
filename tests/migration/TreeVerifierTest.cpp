// Tree verification against a real `cp -a` copy: it passes on the exact copy and catches each
// kind of damage a copy can suffer, one at a time, down to one flipped byte deep in a large file.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <sys/stat.h>
#include <sys/wait.h>

#include <filesystem>
#include <fstream>
#include <functional>

#include "common/PathText.h"
#include "common/SHA256.h"
#include "migration/FileDigest.h"
#include "migration/TreeVerifier.h"
#include "support/TemporaryFolder.h"

namespace corvel {
namespace {

namespace fs = std::filesystem;
using ::testing::ElementsAre;
using ::testing::Field;
using ::testing::IsEmpty;

constexpr std::size_t largeSize = 3 * 1024 * 1024 + 17;  // several digest buffers, not a whole one

std::string largeContents() {
    std::string bytes(largeSize, '\0');
    for (std::size_t i = 0; i < bytes.size(); ++i) bytes[i] = static_cast<char>((i * 131 + i / 7) & 0xff);
    return bytes;
}

void copyTree(const std::string& from, const std::string& to) {
    const auto command = "cp -a '" + from + "' '" + to + "'";
    ASSERT_EQ(std::system(command.c_str()), 0) << command;
}

struct Damage {
    const char* name;
    std::function<void(const std::string& copy)> apply;
    std::string path;
    DifferenceKind kind;
};

class TreeVerifierTest : public ::testing::Test {
protected:
    void SetUp() override {
        folder_.write("source/data/large.bin", largeContents());
        folder_.write("source/src/main.c", "int main(void) { return 0; }\n");
        folder_.write("source/README", "hello\n");
        fs::create_symlink("../README", folder_.path("source/src/readme-link"));
        ASSERT_EQ(::mkfifo(folder_.path("source/pipe").c_str(), 0600), 0);
        ::chmod(folder_.path("source/src/main.c").c_str(), 0640);
        copyTree(source(), copy());
    }
    std::string source() const { return normalPath(folder_.path("source")); }
    std::string copy() const { return normalPath(folder_.path("copy")); }
    TreeComparison compare(unsigned workers = 3) const {
        MigrationProgress progress;
        return TreeVerifier::compare(source(), copy(), {workers}, progress, [] { return false; });
    }

    testing::TemporaryFolder folder_;
};

TEST_F(TreeVerifierTest, AnExactCopyIsIdenticalAndSpecialFilesAreOnlyListed) {
    const auto result = compare();
    EXPECT_THAT(result.differences, IsEmpty());
    EXPECT_TRUE(result.isIdentical);
    EXPECT_THAT(result.skipped, ElementsAre("pipe"));
    EXPECT_EQ(result.filesHashed, 3);
    EXPECT_EQ(result.bytesHashed, 2 * static_cast<std::int64_t>(largeSize + 29 + 6));
}

TEST_F(TreeVerifierTest, EachKindOfDamageIsFoundAndNamed) {
    const std::vector<Damage> damages = {
        {"one flipped byte deep in a large file",
         [](const std::string& copy) {
             std::fstream file(copy + "/data/large.bin", std::ios::in | std::ios::out | std::ios::binary);
             file.seekp(2'500'000);
             file.put('\x5a' ^ static_cast<char>((2'500'000ull * 131 + 2'500'000ull / 7) & 0xff));
         },
         "data/large.bin", DifferenceKind::contentDiffers},
        {"a missing file", [](const std::string& copy) { fs::remove(copy + "/README"); }, "README",
         DifferenceKind::missing},
        {"an extra file", [](const std::string& copy) { std::ofstream(copy + "/src/new.c") << "x"; }, "src/new.c",
         DifferenceKind::extra},
        {"a changed link target",
         [](const std::string& copy) {
             fs::remove(copy + "/src/readme-link");
             fs::create_symlink("/etc/hostname", copy + "/src/readme-link");
         },
         "src/readme-link", DifferenceKind::linkTargetDiffers},
        {"a changed mode", [](const std::string& copy) { ::chmod((copy + "/src/main.c").c_str(), 0644); }, "src/main.c",
         DifferenceKind::modeDiffers},
        {"a shorter file", [](const std::string& copy) { fs::resize_file(copy + "/README", 2); }, "README",
         DifferenceKind::sizeDiffers},
        {"a file turned into a folder",
         [](const std::string& copy) {
             fs::remove(copy + "/README");
             fs::create_directory(copy + "/README");
         },
         "README", DifferenceKind::typeDiffers},
    };
    for (const auto& damage : damages) {
        SCOPED_TRACE(damage.name);
        fs::remove_all(copy());
        copyTree(source(), copy());
        damage.apply(copy());
        const auto result = compare();
        EXPECT_THAT(result.differences, ElementsAre(::testing::AllOf(Field(&TreeDifference::path, damage.path),
                                                                     Field(&TreeDifference::kind, damage.kind))));
        EXPECT_FALSE(result.isIdentical);
    }
}

TEST_F(TreeVerifierTest, OneWorkerAndManyFindTheSame) {
    std::fstream file(copy() + "/src/main.c", std::ios::in | std::ios::out | std::ios::binary);
    file.put('I');
    file.close();
    const auto single = compare(1);
    const auto many = compare(8);
    EXPECT_EQ(single.differences, many.differences);
    ASSERT_EQ(single.differences.size(), 1u);
    EXPECT_EQ(single.differences[0].kind, DifferenceKind::contentDiffers);
}

TEST(FileDigestTest, StreamingDigestEqualsTheWholeBufferDigest) {
    testing::TemporaryFolder folder;
    const auto contents = largeContents();
    const auto path = folder.write("large.bin", contents);
    std::vector<unsigned char> buffer(FileDigest::bufferBytes);
    MigrationProgress progress;
    const auto digest = FileDigest::of(path, buffer, progress, [] { return false; });
    EXPECT_EQ(digest.error, 0);
    EXPECT_EQ(digest.bytesRead, static_cast<std::int64_t>(contents.size()));
    EXPECT_EQ(digest.sha256, SHA256::hex(contents));
    EXPECT_EQ(progress.snapshot().bytes, digest.bytesRead);

    const auto missing = FileDigest::of(folder.path("nothing"), buffer, progress, [] { return false; });
    EXPECT_EQ(missing.error, ENOENT);
    EXPECT_THAT(missing.sha256, IsEmpty());
}

}  // namespace
}  // namespace corvel
