#include "about/AboutModel.h"

#include "shell/CoreSession.h"
#include "updates/ReleaseChannel.h"
#include "updates/UpdateError.h"

namespace corvel::desktop {
namespace {

struct Answer {
    std::optional<UpdateCheck> check;
    std::string error;
};

Answer checkReleases(Machine& machine) {
    Answer answer;
    try {
        const auto repository = machine.settings().settings.updateRepository;
        // In replay gh counts as installed where the recording ran it.
        const ReleaseChannel::IsExecutable isExecutable = [&machine](const std::string& path) {
            return machine.isRecorded() ? machine.toolInstalled(path) : ReleaseChannel::isExecutableFile(path);
        };
        auto channel = ReleaseChannel::locate(repository, machine.runner(ToolTimeout::inspection),
                                              machine.environment(), isExecutable);
        if (!channel) throw UpdateError::githubCLIMissing();
        channel->forPlatform(machine.platform());
        answer.check = UpdateCheck::evaluate(channel->latest(), AboutModel::version());
    } catch (const UpdateError& error) {
        answer.error = error.description();
    } catch (const std::exception& error) {
        answer.error = error.what();
    }
    return answer;
}

}  // namespace

AboutModel::AboutModel(CoreSession& session, QObject* parent) : QObject(parent), session_(session) {}

std::string AboutModel::version() {
    return VELMORA_VERSION;
}

const std::vector<AboutModel::Library>& AboutModel::libraries() {
    static const std::vector<Library> used{
        {"Qt 6", "LGPL-3.0", "windows, widgets, drawing"},
        {"nlohmann/json", "MIT", "reading and writing JSON"},
        {"{fmt}", "MIT", "text formatting"},
        {"OpenSSL (libcrypto)", "Apache-2.0", "SHA-256 digests"},
        {"libplist", "LGPL-2.1-or-later", "reading property lists"},
        {"utf8proc", "MIT", "Unicode text handling"},
        {"libuuid (util-linux)", "BSD-3-Clause", "unique identifiers (Linux)"},
        {"CLI11", "BSD-3-Clause", "the command line's options"},
    };
    return used;
}

void AboutModel::checkForUpdate() {
    if (checking_) return;
    checking_ = true;
    Q_EMIT changed();
    session_.run(
        this, [&machine = session_.machine()] { return checkReleases(machine); },
        [this](Answer answer) {
            checking_ = false;
            check_ = std::move(answer.check);
            error_ = std::move(answer.error);
            Q_EMIT changed();
        });
}

}  // namespace corvel::desktop
