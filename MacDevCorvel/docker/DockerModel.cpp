#include "docker/DockerModel.h"

#include "shell/CoreSession.h"

namespace corvel::desktop {
namespace {

struct Outcome {
    std::optional<DockerReading> reading;
    std::string error;
};

}  // namespace

DockerModel::DockerModel(CoreSession& session, QObject* parent) : QObject(parent), session_(session) {}

void DockerModel::setSnapshot(StorageSnapshot snapshot) {
    busy_ = true;
    session_.run(
        this,
        [&machine = session_.machine(), snapshot = std::move(snapshot)] {
            Outcome outcome;
            try {
                outcome.reading = DockerReading::read(machine, snapshot);
            } catch (const std::exception& error) {
                outcome.error = error.what();
            }
            return outcome;
        },
        [this](Outcome outcome) {
            busy_ = false;
            reading_ = std::move(outcome.reading);
            error_ = std::move(outcome.error);
            Q_EMIT changed();
        });
}

}  // namespace corvel::desktop
