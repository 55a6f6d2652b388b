#include "support/Golden.h"

#include "support/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>

namespace corvel::testing {

void expectGolden(const std::string& relative, const Json& actual) {
    const std::string path = fixturePath("golden/" + relative);
    if (const char* update = std::getenv("VELMORA_UPDATE_GOLDEN"); update && *update) {
        std::filesystem::create_directories(std::filesystem::path(path).parent_path());
        std::ofstream(path, std::ios::binary | std::ios::trunc) << actual.dump(2) << '\n';
        return;
    }
    Json expected;
    try {
        expected = Json::parse(readFixture("golden/" + relative));
    } catch (const std::exception& error) {
        ADD_FAILURE() << error.what() << " (run with VELMORA_UPDATE_GOLDEN=1 to write it)";
        return;
    }
    if (expected == actual) return;
    // One line per difference, in the form of a JSON patch from the reviewed file to this run.
    for (const auto& change : Json::diff(expected, actual)) ADD_FAILURE() << relative << ": " << change.dump();
}

}  // namespace corvel::testing
