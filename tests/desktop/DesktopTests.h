// The desktop's test classes and what they share: a recorded machine opened with a temporary
// data folder, files to measure, waiting for a model's work, and a collector of Qt's warnings.
#pragma once

#include "machine/Machine.h"

#include <QObject>
#include <QSignalSpy>
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

// This machine, with `home` as the person's home: nothing of the real home is read or written.
inline Machine machineWithHome(const QTemporaryDir& home, const QTemporaryDir& data, const char* replay = nullptr) {
    MachineOptions options;
    if (replay) options.replay = fixtureMachine(replay);
    options.dataFolder = data.path().toStdString();
    options.environment = {{"HOME", home.path().toStdString()}, {"PATH", "/usr/bin:/bin"}};
    return Machine::open(options);
}

// `content` at `path`, its folders created first.
void writeFile(const QString& path, const QByteArray& content);

// Waits while `busy()` holds, one `signal` of `model` at a time; false once 20 s pass without one.
template <class Model, class Busy>
bool waitWhile(Model& model, void (Model::*signal)(), Busy busy) {
    QSignalSpy spy(&model, signal);
    while (busy())
        if (!spy.wait(20000)) return false;
    return true;
}

// Waits until the model has left `state`, watching its state signal.
template <class Model>
bool waitOut(Model& model, typename Model::State state) {
    return waitWhile(model, &Model::stateChanged, [&] { return model.state() == state; });
}

// Everything Qt warns about while it lives (the click-through must not cause any).
class WarningCollector {
public:
    WarningCollector();
    ~WarningCollector();
    const QStringList& warnings() const;
};

}  // namespace corvel::desktop::testing
