// The about screen's state: the version, the libraries the application is built on with their
// licences, and an update check through the core's release channel (the same as
// `velmora update check`), made on a pool thread when asked.
//
//   model.checkForUpdate();                         // changed() when the answer is in
//   if (model.check() && model.check()->isNewer) ...
#pragma once

#include "updates/UpdateCheck.h"

#include <QObject>
#include <optional>
#include <string>
#include <vector>

namespace corvel::desktop {

class CoreSession;

class AboutModel : public QObject {
    Q_OBJECT
public:
    struct Library {
        const char* name;
        const char* licence;
        const char* purpose;
    };

    explicit AboutModel(CoreSession& session, QObject* parent = nullptr);

    static std::string version();
    static const std::vector<Library>& libraries();

    void checkForUpdate();
    bool isChecking() const { return checking_; }
    const std::optional<UpdateCheck>& check() const { return check_; }
    // Why the check could not be made (no gh, no release, no network): the core's one line.
    const std::string& error() const { return error_; }

Q_SIGNALS:
    void changed();

private:
    CoreSession& session_;
    std::optional<UpdateCheck> check_;
    std::string error_;
    bool checking_ = false;
};

}  // namespace corvel::desktop
