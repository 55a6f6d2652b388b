#include "hardware/HardwareDiscovery.h"

#include "command/CommandError.h"
#include "command/SystemProfilerClient.h"
#include "hardware/LinuxHardwareReader.h"
#include "hardware/MacHardwareReport.h"
#include "topology/SysfsTree.h"
#include "topology/TopologyDiscovery.h"

namespace corvel::HardwareDiscovery {

HardwareSummary fromReport(CommandRunning& runner) {
    HardwareSummary summary;
    try {
        summary = MacHardwareReport::parse(SystemProfilerClient::policy().run(MacHardwareReport::arguments, runner));
    } catch (const CommandError& error) {
        summary.warnings.push_back("Hardware report: " + error.description());
    } catch (const DecodingError& error) {
        summary.warnings.push_back(std::string("Hardware report: ") + error.what());
    }
    return summary;
}

HardwareSummary fromSysfs(SysfsReading& sysfs) {
    return LinuxHardwareReader::read(sysfs);
}

HardwareSummary replay(CommandRunning& runner, const RecordedMachine& recording) {
    if (recording.platform != Platform::linux) return fromReport(runner);
    std::string problem;
    const auto folder = TopologyDiscovery::recordedSysfs(recording, &problem);
    if (!folder) {
        HardwareSummary summary;
        summary.warnings.push_back("Hardware not read: " + problem);
        return summary;
    }
    SysfsTree sysfs(*folder);
    return fromSysfs(sysfs);
}

}  // namespace corvel::HardwareDiscovery
