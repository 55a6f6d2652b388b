// The command line: global options, the help and version conventions, and one registration
// function per command family (each in its own cli/XxxCommands.cpp), all called from main.cpp.
#pragma once

#include "CliContext.h"

#include <CLI/CLI.hpp>

#include <functional>

namespace corvel::cli {

using CommandFamilies = std::function<void(CLI::App&, CliContext&)>;

// Parses and runs one command line; returns the exit status (0 done, 1 failed, 2 bad usage).
// Never throws: every error becomes one line on the context's error stream.
int runCommandLine(int argc, const char* const* argv, CliContext& context, const CommandFamilies& families);

// The command families.
void registerStatusCommands(CLI::App& app, CliContext& context);
void registerDiagnoseCommands(CLI::App& app, CliContext& context);
void registerSettingsCommands(CLI::App& app, CliContext& context);
void registerFootprintCommands(CLI::App& app, CliContext& context);
void registerScanCommands(CLI::App& app, CliContext& context);
void registerSpaceCommands(CLI::App& app, CliContext& context);
void registerDockerCommands(CLI::App& app, CliContext& context);
void registerInsightsCommands(CLI::App& app, CliContext& context);
void registerAgentCommands(CLI::App& app, CliContext& context);
void registerMetricsCommands(CLI::App& app, CliContext& context);
void registerHistoryCommands(CLI::App& app, CliContext& context);
void registerCleanupCommands(CLI::App& app, CliContext& context);
void registerProcessCommands(CLI::App& app, CliContext& context);
void registerAccountingCommands(CLI::App& app, CliContext& context);
void registerDiskOpsCommands(CLI::App& app, CliContext& context);
void registerConsentCommands(CLI::App& app, CliContext& context);
void registerUpdateCommands(CLI::App& app, CliContext& context);
void registerUninstallCommands(CLI::App& app, CliContext& context);
void registerTopologyCommands(CLI::App& app, CliContext& context);
void registerMigrationCommands(CLI::App& app, CliContext& context);
void registerProjectCommands(CLI::App& app, CliContext& context);
void registerBenchmarkCommands(CLI::App& app, CliContext& context);
void registerReportCommands(CLI::App& app, CliContext& context);
void registerDocumentationCommands(CLI::App& app, CliContext& context);

}  // namespace corvel::cli
