// velmora: the command line. Every capability of the core is reachable here first.
#include "Commands.h"

#include <unistd.h>
#include <iostream>

int main(int argc, char** argv) {
    using namespace corvel::cli;
    CliContext context(std::cout, std::cerr, ::isatty(STDOUT_FILENO) == 1, ::isatty(STDERR_FILENO) == 1);
    context.setInput(std::cin, ::isatty(STDIN_FILENO) == 1);
    return runCommandLine(argc, argv, context, [](CLI::App& app, CliContext& ctx) {
        // One line per command family.
        registerFootprintCommands(app, ctx);
        registerScanCommands(app, ctx);
        registerStatusCommands(app, ctx);
        registerDiagnoseCommands(app, ctx);
        registerSettingsCommands(app, ctx);
        registerSpaceCommands(app, ctx);
        registerDockerCommands(app, ctx);
        registerInsightsCommands(app, ctx);
        registerAgentCommands(app, ctx);
        registerMetricsCommands(app, ctx);
        registerHistoryCommands(app, ctx);
        registerCleanupCommands(app, ctx);
        registerProcessCommands(app, ctx);
        registerAccountingCommands(app, ctx);
        registerDiskOpsCommands(app, ctx);
        registerConsentCommands(app, ctx);
        registerUpdateCommands(app, ctx);
        registerUninstallCommands(app, ctx);
        registerTopologyCommands(app, ctx);
        registerMigrationCommands(app, ctx);
        registerProjectCommands(app, ctx);
        registerBenchmarkCommands(app, ctx);
        registerReportCommands(app, ctx);
        registerDocumentationCommands(app, ctx);
    });
}
