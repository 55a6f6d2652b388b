// The machine the application looks at, and the background threads that do the core's work on
// it. A screen model hands over a piece of work and a completion; the work runs on a pool thread,
// the completion on the interface thread, and only while the model still exists. The window never
// waits for the core.
//
//   session.run(this, [&machine = session.machine()] { return machine.snapshot(); },
//               [this](StorageSnapshot snapshot) { setSnapshot(std::move(snapshot)); });
#pragma once

#include "machine/Machine.h"

#include <QObject>
#include <QPointer>
#include <QThreadPool>
#include <memory>
#include <utility>

namespace corvel::desktop {

class CoreSession : public QObject {
public:
    explicit CoreSession(Machine machine, QObject* parent = nullptr);
    // Waits for the work under way: it refers to the machine.
    ~CoreSession() override;

    Machine& machine() { return machine_; }

    template <class Work, class Done>
    void run(QObject* receiver, Work work, Done done) {
        QPointer<QObject> guard(receiver);
        pool_.start([this, guard, work = std::move(work), done = std::move(done)]() mutable {
            auto result = std::make_shared<decltype(work())>(work());
            // Back on the interface thread, through the session that outlives the pool; the
            // receiver is looked at only there, where it is deleted.
            QMetaObject::invokeMethod(
                this,
                [guard, result, done]() mutable {
                    if (guard) done(std::move(*result));
                },
                Qt::QueuedConnection);
        });
    }

    // Blocks until every piece of work handed over so far is done (tests, shutdown).
    void waitForWork() { pool_.waitForDone(); }

private:
    Machine machine_;
    QThreadPool pool_;
};

}  // namespace corvel::desktop
