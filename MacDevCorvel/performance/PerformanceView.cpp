#include "performance/PerformanceView.h"

#include "performance/PerformanceModel.h"
#include "widgets/ScreenParts.h"
#include "widgets/ToolParts.h"

#include <QFileDialog>
#include <QHBoxLayout>
#include <QLineEdit>
#include <QPushButton>
#include <QScrollArea>
#include <QTreeWidget>
#include <QVBoxLayout>

namespace corvel::desktop {
namespace {

using ScreenParts::heading;
using ScreenParts::note;
using ScreenParts::text;

QString number(double value, int decimals) {
    return QString::number(value, 'f', decimals);
}

void showRun(QVBoxLayout* page, const BenchmarkRun& run) {
    page->addWidget(note(QStringLiteral("%1 on %2 (%3) · %4 test file, %5 s per test%6")
                             .arg(ToolParts::date(run.date), text(run.mountPoint), text(run.fileSystemType),
                                  ToolParts::bytes(run.fileBytes), number(run.secondsPerJob, 0),
                                  run.isCacheBypassed ? QString() : QStringLiteral(" · through the cache"))));
    if (run.isInterrupted)
        page->addWidget(ToolParts::toned(Tone::caution, QStringLiteral("Interrupted: the tests below finished.")));
    auto* table = ToolParts::table({"Test", "MB/s", "IOPS", "p50 µs", "p99 µs", "p99.9 µs"});
    for (const auto& result : run.results)
        ToolParts::addRow(table, {text(result.name), number(result.megabytesPerSecond, 1), number(result.iops, 0),
                                  number(result.latencyP50Micros, 0), number(result.latencyP99Micros, 0),
                                  number(result.latencyP999Micros, 0)});
    ToolParts::fit(table);
    page->addWidget(table);
    for (const auto& line : run.notes) page->addWidget(note(text(line)));
}

}  // namespace

PerformanceView::PerformanceView(PerformanceModel& model, QWidget* parent)
    : QWidget(parent),
      model_(model),
      folder_(new QLineEdit),
      run_(new QPushButton(QStringLiteral("Run Benchmark"))),
      cancel_(new QPushButton(QStringLiteral("Cancel"))),
      progress_(ScreenParts::note({})),
      refusal_(ScreenParts::note({})),
      results_(new QScrollArea) {
    auto* layout = ToolParts::page(this, QStringLiteral("Performance"));
    layout->addWidget(note(QStringLiteral("Measures sequential and random reads and writes, with latency, on one "
                                          "temporary %1 file on the volume holding the folder; the file never "
                                          "outlives the run.")
                               .arg(ToolParts::bytes(PerformanceModel::fileBytes))));
    auto* bar = new QHBoxLayout;
    bar->addWidget(new QLabel(QStringLiteral("Folder")));
    folder_->setAccessibleName(QStringLiteral("Folder to measure"));
    bar->addWidget(folder_, 1);
    auto* choose = new QPushButton(QStringLiteral("Choose…"));
    bar->addWidget(choose);
    bar->addWidget(run_);
    bar->addWidget(cancel_);
    layout->addLayout(bar);
    layout->addWidget(progress_);
    layout->addWidget(refusal_);
    results_->setWidgetResizable(true);
    results_->setFrameShape(QFrame::NoFrame);
    layout->addWidget(results_, 1);

    connect(choose, &QPushButton::clicked, this, [this] {
        const auto folder = QFileDialog::getExistingDirectory(this, QStringLiteral("Choose a folder"), folder_->text());
        if (!folder.isEmpty()) folder_->setText(folder);
    });
    connect(folder_, &QLineEdit::textChanged, this,
            [this](const QString& folder) { model_.setFolder(folder.trimmed().toStdString()); });
    connect(run_, &QPushButton::clicked, &model_, &PerformanceModel::start);
    connect(cancel_, &QPushButton::clicked, &model_, &PerformanceModel::cancel);
    connect(&model_, &PerformanceModel::changed, this, &PerformanceView::rebuild);
    connect(&model_, &PerformanceModel::progressChanged, this, [this] { progress_->setText(model_.progressText()); });
    rebuild();
}

void PerformanceView::rebuild() {
    if (folder_->text().toStdString() != model_.folder()) {
        const QSignalBlocker quiet(folder_);
        folder_->setText(text(model_.folder()));
    }
    const auto refusal = model_.startRefusal();
    run_->setEnabled(!refusal);
    cancel_->setEnabled(model_.isRunning());
    progress_->setText(model_.progressText());
    progress_->setVisible(model_.isRunning());
    refusal_->setText(refusal && !model_.isRunning() ? text(*refusal) : QString());
    refusal_->setVisible(!refusal_->text().isEmpty());

    auto* page = ToolParts::refill(results_);
    if (!model_.error().empty()) page->addWidget(ToolParts::toned(Tone::bad, text(model_.error())));
    if (const auto& run = model_.lastRun()) {
        page->addWidget(heading(QStringLiteral("Last run")));
        showRun(page, *run);
    }
    page->addWidget(heading(QStringLiteral("Earlier runs")));
    if (model_.history().empty())
        page->addWidget(note(QStringLiteral("No benchmark has been run yet.")));
    else {
        auto* table = ToolParts::table({"Date", "Volume", "File", "Tests", "Best MB/s"});
        for (const auto& run : model_.history()) {
            double best = 0;
            for (const auto& result : run.results) best = std::max(best, result.megabytesPerSecond);
            ToolParts::addRow(table, {ToolParts::date(run.date), text(run.mountPoint), ToolParts::bytes(run.fileBytes),
                                      QString::number(run.results.size()), number(best, 1)});
        }
        ToolParts::fit(table);
        page->addWidget(table);
    }
    page->addStretch(1);
}

}  // namespace corvel::desktop
