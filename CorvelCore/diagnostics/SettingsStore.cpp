#include "diagnostics/SettingsStore.h"

#include "common/AtomicFile.h"

#include <exception>
#include <utility>

namespace corvel {

SettingsStore::SettingsStore(std::filesystem::path dataDirectory, std::filesystem::path home)
    : path_(std::move(dataDirectory) / fileName), home_(std::move(home)) {}

SettingsStore::Loaded SettingsStore::load() {
    Loaded loaded{defaults(), false, std::nullopt};
    std::optional<std::string> problem;
    try {
        if (const auto text = AtomicFile::read(path_)) {
            CorvelSettings settings = defaults();
            from_json(parseJsonText(*text, path_.string()), settings);
            if (auto invalid = settings.validationProblem())
                problem = path_.string() + ": " + *invalid;
            else
                loaded = Loaded{std::move(settings), true, std::nullopt};
        }
    } catch (const FileError& error) {
        problem = error.what();
    } catch (const DecodingError& error) {
        const std::string message = error.what();
        // parseJsonText already names the file; decoding errors name only the key.
        problem = message.rfind(path_.string(), 0) == 0 ? message : path_.string() + ": " + message;
    } catch (const std::exception& error) {
        problem = path_.string() + ": " + error.what();
    }
    unreadable_ = problem.has_value();
    if (problem && problem != reportedProblem_) {
        reportedProblem_ = problem;
        loaded.warning = "settings file is unreadable, using the defaults until the next change (" + *problem + ")";
    }
    return loaded;
}

void SettingsStore::save(const CorvelSettings& settings) {
    if (unreadable_) {
        // The user may still want what was in it.
        std::error_code ignored;
        std::filesystem::rename(path_, path_.string() + ".unreadable", ignored);
        unreadable_ = false;
    }
    const Json document = settings;
    AtomicFile::write(path_, document.dump(2) + "\n");
    // The bad file is gone; should a new one break the same way, that is news again.
    reportedProblem_.reset();
}

}  // namespace corvel
