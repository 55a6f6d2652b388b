// Runs the desktop's test classes, all of them or the one named first on the command line (ctest
// runs each alone, so that a failure names its class); the remaining arguments go to Qt Test.
#include "DesktopTests.h"

#include <QApplication>
#include <string_view>
#include <memory>
#include <vector>

int main(int argc, char** argv) {
    QApplication app(argc, argv);
    const auto tests = corvel::desktop::testing::allTests();
    const char* only = argc > 1 && argv[1][0] != '-' ? argv[1] : nullptr;
    std::vector<char*> rest{argv[0]};
    for (int i = only ? 2 : 1; i < argc; ++i) rest.push_back(argv[i]);
    int failures = 0;
    bool ran = false;
    for (const auto& test : tests) {
        const std::string_view name = test->metaObject()->className();
        if (only && name.substr(name.rfind(':') + 1) != only) continue;
        ran = true;
        failures += QTest::qExec(test.get(), static_cast<int>(rest.size()), rest.data());
    }
    return ran ? failures : 2;
}
