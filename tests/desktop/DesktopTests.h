// The desktop's test classes and what they share: a recorded machine opened with a temporary
// data folder, and a collector of Qt's warnings.
#pragma once

#include "machine/Machine.h"

#include <QObject>
#include <QStringList>
#include <QTemporaryDir>
#include <QtTest>
#include <memory>
#include <string>
#include <vector>

namespace corvel::desktop::testing {

std::vector<std::unique_ptr<QObject>> allTests();

std::unique_ptr<QObject> makeTreemapLayoutTest();
std::unique_ptr<QObject> makeAppOptionsTest();
std::unique_ptr<QObject> makeScreenModelsTest();
std::unique_ptr<QObject> makeClickThroughTest();
std::unique_ptr<QObject> makeStorageScreensTest();
std::unique_ptr<QObject> makePaletteAndChartTest();
std::unique_ptr<QObject> makeToolModelsTest();
std::unique_ptr<QObject> makeConsentTrayTest();
std::unique_ptr<QObject> makeBrandTest();

inline std::string fixtureMachine(const std::string& name) {
    return std::string(CORVEL_FIXTURES_DIR) + "/machines/" + name;
}

// The recording, read with its own clock and nothing of ours: settings and history stay in `data`.
inline Machine recordedMachine(const std::string& name, const QTemporaryDir& data) {
    MachineOptions options;
    options.replay = fixtureMachine(name);
    options.dataFolder = data.path().toStdString();
    return Machine::open(options);
}

// Everything Qt warns about while it lives (the click-through must not cause any).
class WarningCollector {
public:
    WarningCollector();
    ~WarningCollector();
    const QStringList& warnings() const;
};

}  // namespace corvel::desktop::testing
