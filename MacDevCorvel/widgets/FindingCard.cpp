#include "widgets/FindingCard.h"

#include "common/EnumTable.h"
#include "widgets/ScreenParts.h"
#include "widgets/TrafficLight.h"

#include <QFrame>
#include <QGridLayout>

namespace corvel::desktop::FindingCard {
namespace {

using ScreenParts::text;

// Disks are known by their device id as well; a volume's id is a UUID nobody wants to read.
QString subjectText(const Finding& finding) {
    if (finding.subject.kind == FindingSubject::Kind::disk)
        return text(finding.subjectName + " (" + finding.subject.payload + ")");
    return text(finding.subjectName);
}

}  // namespace

QWidget* make(const Finding& finding) {
    auto* frame = new QFrame;
    frame->setFrameShape(QFrame::StyledPanel);
    auto* layout = new QGridLayout(frame);
    layout->setHorizontalSpacing(10);
    const auto severity = text(label(finding.severity));
    layout->addWidget(new TrafficLight(toneOf(finding.severity), severity), 0, 0, Qt::AlignVCenter);
    auto* headline = ScreenParts::wrapped(severity + QStringLiteral(" · ") + subjectText(finding) +
                                          QStringLiteral(": ") + text(finding.title));
    QFont font = headline->font();
    font.setBold(true);
    headline->setFont(font);
    layout->addWidget(headline, 0, 1);
    int row = 1;
    layout->addWidget(ScreenParts::wrapped(text(finding.detail)), row++, 1);
    const std::pair<const char*, const std::optional<std::string>*> parts[] = {
        {"Recommendation", &finding.recommendation}, {"Evidence", &finding.evidence}, {"Impact", &finding.impact}};
    for (const auto& [name, value] : parts) {
        if (!*value) continue;
        auto* line = ScreenParts::wrapped(QString::fromUtf8(name) + QStringLiteral(": ") + text(**value));
        line->setTextInteractionFlags(Qt::TextSelectableByMouse);
        layout->addWidget(line, row++, 1);
    }
    layout->setColumnStretch(1, 1);
    return frame;
}

}  // namespace corvel::desktop::FindingCard
