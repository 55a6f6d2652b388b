// Gathers what the HTML report shows from the machine being looked at, live or recorded: one
// refresh (snapshot, diagnosis, forecasts from the kept history), the insights, Docker when the
// program is there, and the space of a scan made for the report or else of the last scan's saved
// summary. The front end only writes the page.
//
//   auto input = MachineReport::gather(machine, settings, scannedSpace);
//   AtomicFile::write(file, HtmlReport::render(input));
#pragma once

#include "diagnostics/CorvelSettings.h"
#include "machine/Machine.h"
#include "report/HtmlReport.h"

#include <cstddef>
#include <optional>

namespace corvel::MachineReport {

// `space`: a scan made for this report; without one the last scan's summary is used when it
// belongs to this machine. A summary that cannot be read becomes a note.
HtmlReportInput gather(Machine& machine, const CorvelSettings& settings, std::optional<ReportSpace> space,
                       std::size_t maxNodes);

}  // namespace corvel::MachineReport
