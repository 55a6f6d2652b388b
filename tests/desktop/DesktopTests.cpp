#include "DesktopTests.h"

#include <QFile>

namespace corvel::desktop::testing {
namespace {

// Qt takes a plain function as its message handler, so what it collects has to live here.
QStringList* collected = nullptr;
QtMessageHandler previous = nullptr;

void collect(QtMsgType type, const QMessageLogContext& context, const QString& message) {
    // The offscreen platform says so whenever a window's minimum size changes; a real one obeys.
    const bool offscreenLimit = message == QLatin1String("This plugin does not support propagateSizeHints()");
    if (type != QtDebugMsg && type != QtInfoMsg && collected && !offscreenLimit) collected->append(message);
    if (previous) previous(type, context, message);
}

}  // namespace

std::vector<std::unique_ptr<QObject>> allTests() {
    std::vector<std::unique_ptr<QObject>> tests;
    tests.push_back(makeTreemapLayoutTest());
    tests.push_back(makeAppOptionsTest());
    tests.push_back(makeScreenModelsTest());
    tests.push_back(makePaletteAndChartTest());
    tests.push_back(makeToolModelsTest());
    tests.push_back(makeConsentTrayTest());
    tests.push_back(makeBrandTest());
    tests.push_back(makeClickThroughTest());
    return tests;
}

void writeFile(const QString& path, const QByteArray& content) {
    QDir().mkpath(QFileInfo(path).path());
    QFile file(path);
    QVERIFY(file.open(QIODevice::WriteOnly));
    QCOMPARE(file.write(content), content.size());
}

WarningCollector::WarningCollector() {
    collected = new QStringList;
    previous = qInstallMessageHandler(collect);
}

WarningCollector::~WarningCollector() {
    qInstallMessageHandler(previous);
    delete collected;
    collected = nullptr;
}

const QStringList& WarningCollector::warnings() const {
    return *collected;
}

}  // namespace corvel::desktop::testing
