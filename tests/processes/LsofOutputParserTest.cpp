// The open-file lister's field output, parsed by process set, names taken raw.
#include "processes/LsofOutputParser.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace corvel {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;
using Kind = ProcessUsage::Kind;

TEST(LsofOutputParser, ReadsProcessSetsAndTheirFiles) {
    const std::string output =
        "p412\ncFinder\nfcwd\nn/Volumes/Elements\nftxt\nn/Volumes/Elements/bin/tool\nf23\n"
        "n/Volumes/Elements/a b\xff.txt\n"
        "pnot-a-pid\ncghost\nf3\nn/Volumes/Elements/skipped\n"     // an unreadable set and its files
        "p977\ncz sh\nf4\nfmem\nn/Volumes/Elements/lib.so\nk9\n";  // a file set without a name, a stray field
    EXPECT_THAT(LsofOutputParser::parse(output),
                ElementsAre(ProcessUsage{412, "Finder", "/Volumes/Elements", Kind::workingDirectory},
                            ProcessUsage{412, "Finder", "/Volumes/Elements/bin/tool", Kind::executable},
                            ProcessUsage{412, "Finder", "/Volumes/Elements/a b\xff.txt", Kind::openFile},
                            ProcessUsage{977, "z sh", "/Volumes/Elements/lib.so", Kind::openFile}));
    EXPECT_THAT(LsofOutputParser::parse(""), IsEmpty());
    EXPECT_THAT(LsofOutputParser::parse("n/orphan\nf3\n"), IsEmpty());
}

}  // namespace
}  // namespace corvel
