#include "CliContext.h"

#include "CliErrors.h"
#include "common/Text.h"

namespace corvel::cli {
namespace {

bool trueColourTerminal(const Environment& environment) {
    const auto colourTerm = lookup(environment, "COLORTERM");
    return colourTerm && (*colourTerm == "truecolor" || *colourTerm == "24bit");
}

}  // namespace

CliContext::CliContext(std::ostream& out, std::ostream& err, bool outIsTerminal, bool errIsTerminal,
                       Environment environment)
    : out_(out),
      err_(err),
      style_(outIsTerminal && !lookup(environment, "NO_COLOR"), trueColourTerminal(environment)),
      errIsTerminal_(errIsTerminal),
      environment_(std::move(environment)) {}

void CliContext::validate() {
    machine();
}

Machine& CliContext::machine() {
    if (!machine_) {
        MachineOptions options;
        if (!options_.replay.empty()) options.replay = options_.replay;
        if (!options_.now.empty()) options.now = options_.now;
        if (!options_.dataDir.empty()) options.dataFolder = options_.dataDir;
        options.environment = environment_;
        try {
            machine_.emplace(Machine::open(std::move(options)));
        } catch (const MachineError& error) {
            throw UsageError(error.what());
        }
    }
    return *machine_;
}

bool CliContext::confirm(const std::string& question, bool assumeYes) {
    if (assumeYes) return true;
    if (!in_ || !inIsTerminal_ || !errIsTerminal_)
        throw UsageError("this needs your confirmation: run it on a terminal, or add --yes to confirm in advance");
    err_ << question << ' ' << std::flush;
    std::string answer;
    if (!std::getline(*in_, answer)) return false;
    const auto word = toLower(trim(answer));
    return word == "y" || word == "yes";
}

void CliContext::printJson(const Json& document) {
    // Names that are not UTF-8 (legal on every Unix file system) must not abort the output.
    out_ << document.dump(2, ' ', false, Json::error_handler_t::replace) << '\n';
}

void CliContext::printSource() {
    if (const auto* recording = machine().recording())
        out_ << style_.dim("Recorded machine: " + recording->name + " (" + ISO8601::format(machine().now()) + ")")
             << "\n\n";
}

}  // namespace corvel::cli
