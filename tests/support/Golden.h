// Compares a rendered JSON document with a reviewed copy under tests/fixtures/golden/, so that
// every user-facing text an engine writes is checked in one file and changed as one diff.
// Run the tests with VELMORA_UPDATE_GOLDEN=1 to rewrite the file, then review `git diff`.
//
//   Json rendered = Json::object();
//   rendered["smart failing"] = engine.diskFindings(failingDisk);
//   expectGolden("diagnostics/findings.json", rendered);
#pragma once

#include "common/Json.h"

#include <string>

namespace corvel::testing {

// Adds a test failure naming each differing JSON pointer when `actual` differs from the file.
void expectGolden(const std::string& relative, const Json& actual);

}  // namespace corvel::testing
