// desktop_bench: how quickly the desktop application answers, under the offscreen platform.
//
//   desktop_bench start [--runs N]           process start to the first painted dashboard holding
//                                            the refresh of a recorded Mac (target < 1 s)
//   desktop_bench responsiveness TREE [--runs N]
//                                            the longest gap of a 10 ms timer while the Space
//                                            screen scans TREE (target < 50 ms)
//   desktop_bench treemap TREE [--runs N]    the treemap's redraw after a resize, for the scan of
//                                            TREE and for one folder of 354,000 files (target < 16 ms)
//
// Each prints one line per run and the median. Build with -DCORVEL_BUILD_BENCH=ON.
#include "dashboard/DashboardModel.h"
#include "machine/Machine.h"
#include "shell/CoreSession.h"
#include "shell/MainWindow.h"
#include "shell/Refresher.h"
#include "space/SpaceModel.h"
#include "widgets/TreemapWidget.h"

#include <QApplication>
#include <QElapsedTimer>
#include <QEventLoop>
#include <QProcess>
#include <QTemporaryDir>
#include <QTimer>
#include <QWidget>
#include <algorithm>
#include <chrono>
#include <cstdio>
#include <iostream>
#include <string>
#include <vector>

using namespace corvel;
using namespace corvel::desktop;

namespace {

using Clock = std::chrono::steady_clock;

double median(std::vector<double> values) {
    std::sort(values.begin(), values.end());
    const auto middle = values.size() / 2;
    return values.size() % 2 ? values[middle] : (values[middle - 1] + values[middle]) / 2;
}

void report(const char* what, const std::vector<double>& values, const char* unit, double target) {
    const double middle = median(values);
    std::printf("%s: median %.1f %s over %zu runs (target < %.0f %s) %s\n", what, middle, unit, values.size(), target,
                unit, middle < target ? "PASS" : "OVER");
}

Machine recorded(const std::string& data) {
    MachineOptions options;
    options.replay = std::string(CORVEL_FIXTURES_DIR) + "/machines/macbook-air-m2";
    options.dataFolder = data;
    return Machine::open(options);
}

// Stops the event loop at the first paint of the dashboard once it holds the refresh.
// A scroll area paints through its viewport and content, never itself, so the filter watches the
// whole application for a paint of the dashboard or of anything inside it.
class FirstPaint : public QObject {
public:
    FirstPaint(DashboardModel& model, QWidget* dashboard, QObject* parent)
        : QObject(parent), model_(model), dashboard_(dashboard) {}

protected:
    bool eventFilter(QObject* watched, QEvent* event) override {
        const auto* widget = qobject_cast<QWidget*>(watched);
        const bool onDashboard = widget && (widget == dashboard_ || dashboard_->isAncestorOf(widget));
        if (event->type() == QEvent::Paint && onDashboard && model_.isLoaded() && !done_) {
            done_ = true;
            QTimer::singleShot(0, qApp, &QApplication::quit);
        }
        return QObject::eventFilter(watched, event);
    }

private:
    DashboardModel& model_;
    QWidget* dashboard_;
    bool done_ = false;
};

// The child: the application's own start, then exit at the first painted dashboard.
int startChild(int argc, char** argv) {
    QTemporaryDir data;
    auto machine = recorded(data.path().toStdString());
    QApplication app(argc, argv);
    CoreSession session(std::move(machine));
    MainWindow window(session);
    FirstPaint watcher(window.dashboard(), window.screen(0), &window);
    app.installEventFilter(&watcher);
    window.show();
    window.refresher().refresh();
    QTimer::singleShot(30000, &app, [] { QApplication::exit(1); });
    const int status = QApplication::exec();
    std::cout << "painted" << std::endl;
    return status;
}

int start(const char* self, int runs) {
    std::vector<double> times;
    for (int run = 0; run < runs; ++run) {
        QProcess child;
        child.setProcessChannelMode(QProcess::ForwardedErrorChannel);
        const auto began = Clock::now();
        child.start(QString::fromLocal8Bit(self), {QStringLiteral("start-child")});
        if (!child.waitForFinished(60000) || child.exitCode() != 0 ||
            !child.readAllStandardOutput().contains("painted")) {
            std::cerr << "desktop_bench: the application did not paint its dashboard\n";
            return 1;
        }
        times.push_back(std::chrono::duration<double, std::milli>(Clock::now() - began).count());
        std::printf("  run %d: %.1f ms\n", run + 1, times.back());
    }
    report("start to first painted dashboard", times, "ms", 1000);
    return 0;
}

int responsiveness(const std::string& tree, int runs) {
    std::vector<double> gaps;
    for (int run = 0; run < runs; ++run) {
        QTemporaryDir data;
        CoreSession session(recorded(data.path().toStdString()));
        MainWindow window(session);
        window.show();
        window.showScreen(window.screenNames().indexOf(QStringLiteral("Space")));
        QEventLoop loop;
        QElapsedTimer clock;
        double longest = 0;
        qint64 last = 0;
        QTimer tick;
        tick.setInterval(10);
        QObject::connect(&tick, &QTimer::timeout, [&] {
            const qint64 now = clock.nsecsElapsed();
            longest = std::max(longest, (now - last) / 1e6);
            last = now;
        });
        QObject::connect(&window.space(), &SpaceModel::stateChanged, &loop, [&] {
            if (window.space().state() != SpaceModel::State::scanning) loop.quit();
        });
        window.space().setFolder(tree);
        clock.start();
        tick.start();
        window.space().start();
        loop.exec();
        // What the screen does with the finished tree is part of staying responsive.
        QTimer::singleShot(300, &loop, &QEventLoop::quit);
        loop.exec();
        if (window.space().state() != SpaceModel::State::finished) {
            std::cerr << "desktop_bench: the scan of " << tree << " did not finish: " << window.space().error() << '\n';
            return 1;
        }
        gaps.push_back(longest);
        std::printf("  run %d: longest gap %.1f ms (scan %.2f s)\n", run + 1, longest, clock.nsecsElapsed() / 1e9);
    }
    report("event loop while scanning", gaps, "ms", 50);
    return 0;
}

// The resize's own layout plus one full paint, as the window system would ask for it.
std::vector<double> redraws(const SpaceNode& node, int runs) {
    TreemapWidget map;
    map.resize(900, 600);
    map.setNode(&node);
    map.show();
    QApplication::processEvents();
    std::vector<double> times;
    for (int run = 0; run < runs; ++run) {
        const auto began = Clock::now();
        map.resize(run % 2 ? 900 : 1000, run % 2 ? 600 : 700);
        map.repaint();
        times.push_back(std::chrono::duration<double, std::milli>(Clock::now() - began).count());
    }
    return times;
}

std::int64_t entries(const SpaceNode& node) {
    std::int64_t count = 1;
    for (const auto& child : node.children) count += child.isAggregate() ? child.aggregatedItems : entries(child);
    return count;
}

int treemap(const std::string& tree, int runs) {
    QTemporaryDir data;
    CoreSession session(recorded(data.path().toStdString()));
    SpaceModel model(session);
    QEventLoop loop;
    QObject::connect(&model, &SpaceModel::stateChanged, &loop, [&] {
        if (model.state() != SpaceModel::State::scanning) loop.quit();
    });
    model.setFolder(tree);
    model.start();
    loop.exec();
    if (model.state() != SpaceModel::State::finished) {
        std::cerr << "desktop_bench: the scan of " << tree << " did not finish: " << model.error() << '\n';
        return 1;
    }
    std::printf("  scan of %s: %lld entries\n", tree.c_str(), static_cast<long long>(entries(model.root())));
    report("treemap redraw after a resize, scanned tree", redraws(model.root(), runs), "ms", 16);

    // The worst case: every one of the entries a file in one folder, each its own tile.
    SpaceNode flat;
    flat.path = "/flat";
    flat.name = "flat";
    flat.isDirectory = true;
    for (int i = 0; i < 354000; ++i) {
        SpaceNode file;
        file.name = "file" + std::to_string(i);
        file.path = "/flat/" + file.name;
        file.allocatedBytes = 4096 * (1 + (i * 7919) % 5000);
        flat.children.push_back(std::move(file));
    }
    std::sort(flat.children.begin(), flat.children.end(),
              [](const SpaceNode& a, const SpaceNode& b) { return a.allocatedBytes > b.allocatedBytes; });
    report("treemap redraw after a resize, one folder of 354,000 files", redraws(flat, runs), "ms", 16);
    return 0;
}

int runsOption(int argc, char** argv, int fallback) {
    for (int i = 1; i + 1 < argc; ++i)
        if (std::string(argv[i]) == "--runs") return std::max(1, std::atoi(argv[i + 1]));
    return fallback;
}

}  // namespace

int main(int argc, char** argv) {
    const std::string mode = argc > 1 ? argv[1] : "";
    if (mode == "start-child") return startChild(argc, argv);
    if (mode == "start") {
        QCoreApplication app(argc, argv);
        return start(argv[0], runsOption(argc, argv, 7));
    }
    if ((mode == "responsiveness" || mode == "treemap") && argc > 2) {
        QApplication app(argc, argv);
        const std::string tree = argv[2];
        return mode == "treemap" ? treemap(tree, runsOption(argc, argv, 31))
                                 : responsiveness(tree, runsOption(argc, argv, 5));
    }
    std::cerr << "usage: desktop_bench start | responsiveness TREE | treemap TREE  [--runs N]\n";
    return 2;
}
