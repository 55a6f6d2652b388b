#include "machine/RefreshCycle.h"

#include "machine/MachineTopology.h"
#include "monitoring/MountChange.h"
#include "monitoring/VolumeSample.h"

namespace corvel::RefreshCycle {

Result run(Machine& machine, const CorvelSettings& settings, const Steps& steps) {
    Result result;
    result.snapshot = machine.snapshot();
    // The topology's own warnings belong to `velmora topology`; here an unreadable path only
    // leaves the connection dimension unknown.
    const auto topology = MachineTopology::read(machine, result.snapshot);
    result.diagnosis = MachineDiagnosis::of(result.snapshot, settings, topology.topologies);
    const TimePoint at = result.snapshot.capturedAt;

    if (steps.previous) {
        result.events = MonitorEvent::fromMountChange(MountChange::diff(*steps.previous, result.snapshot), at);
    }
    if (steps.alerts) {
        result.alerts = steps.alerts->update(result.diagnosis.report.findings, alertMinimumSeverity);
        for (const auto& finding : result.alerts) result.events.push_back(MonitorEvent::alert(finding, at));
    }
    if (steps.history) {
        if (steps.recordHistory) {
            std::vector<VolumeSample> samples;
            // A volume of unknown size has no free space worth a trend.
            for (const auto& volume : result.snapshot.volumes)
                if (volume.totalBytes > 0) samples.push_back(VolumeSample::of(volume, at));
            try {
                steps.history->record(samples, machine.now());
            } catch (const std::exception& error) {
                result.warnings.push_back(std::string("Could not save history: ") + error.what());
            }
        }
        if (auto problem = steps.history->loadProblem()) result.warnings.push_back(*problem);
        for (const auto& volume : result.snapshot.volumes) {
            if (auto days =
                    CapacityForecast::daysUntilFull(steps.history->samples(volume.id), steps.forecastMinimumSpan))
                result.forecasts[volume.id] = *days;
        }
    }
    return result;
}

}  // namespace corvel::RefreshCycle
