// A fresh folder under the system's temporary folder for one test, removed with everything in it
// when the test ends (also folders a test made unreadable).
//
//   TemporaryFolder folder;
//   folder.write("cache/a.bin", std::string(4096, 'x'));
//   scan(folder.path("cache"));
#pragma once

#include <filesystem>
#include <string>

namespace corvel::testing {

class TemporaryFolder {
public:
    TemporaryFolder();
    ~TemporaryFolder();
    TemporaryFolder(const TemporaryFolder&) = delete;
    TemporaryFolder& operator=(const TemporaryFolder&) = delete;

    const std::filesystem::path& root() const { return root_; }
    std::string path() const { return root_.string(); }
    std::string path(const std::string& relative) const { return (root_ / relative).string(); }

    // Writes `contents` to `relative`, making the folders on the way; returns the full path.
    std::string write(const std::string& relative, const std::string& contents) const;
    // Makes `relative` and the folders on the way; returns the full path.
    std::string makeFolder(const std::string& relative) const;

private:
    std::filesystem::path root_;
};

// The recorded machine `name` among the fixtures, and any other fixture file.
std::string machineFolder(const std::string& name);
std::string fixturePath(const std::string& relative);
// The whole contents of a fixture file (throws when it is missing).
std::string readFixture(const std::string& relative);

}  // namespace corvel::testing
