// One finding as a framed card: its severity light, subject and title, the detail, and the
// recommendation, evidence and impact when the finding has them. Diagnostics, topology and the
// detail screens show findings the same way.
//
//   layout->addWidget(FindingCard::make(finding));
#pragma once

#include "diagnostics/Finding.h"

#include <QWidget>

namespace corvel::desktop::FindingCard {

QWidget* make(const Finding& finding);

}  // namespace corvel::desktop::FindingCard
