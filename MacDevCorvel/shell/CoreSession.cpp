#include "shell/CoreSession.h"

namespace corvel::desktop {

CoreSession::CoreSession(Machine machine, QObject* parent) : QObject(parent), machine_(std::move(machine)) {
    // A refresh and a scan at the same time is the most the screens ask for.
    pool_.setMaxThreadCount(2);
}

CoreSession::~CoreSession() {
    pool_.waitForDone();
}

}  // namespace corvel::desktop
