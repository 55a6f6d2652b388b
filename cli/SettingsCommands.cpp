// `velmora settings` and `velmora settings set KEY VALUE`: what is configured, where it is kept,
// and a validated way to change one key.
#include "SettingsCommands.h"

#include "CliErrors.h"
#include "Commands.h"
#include "common/AtomicFile.h"
#include "diagnostics/SettingsEditor.h"
#include "diagnostics/SettingsStore.h"

#include <algorithm>
#include <memory>

namespace corvel::cli {
namespace {

SettingsStore storeFor(CliContext& context) {
    return SettingsStore(context.machine().dataFolder(), context.machine().home());
}

SettingsStore::Loaded load(CliContext& context, SettingsStore& store) {
    auto loaded = store.load();
    if (loaded.warning) context.err() << "velmora: warning: " << *loaded.warning << '\n';
    return loaded;
}

Json settingsDocument(const SettingsStore& store, const CorvelSettings& settings) {
    return Json{{"file", store.path().string()}, {"settings", settings}};
}

void printSettings(CliContext& context, const SettingsStore& store, const SettingsStore::Loaded& loaded) {
    const auto& style = context.style();
    context.out() << style.bold("Settings") << ' ' << style.dim(store.path().string()) << '\n';
    if (!loaded.fromFile) context.out() << style.dim("  (no settings saved yet: these are the defaults)") << '\n';
    Table table;
    for (const auto& [key, text] : SettingsEditor::entries(loaded.settings)) table.addRow({key, text});
    table.print(context.out(), "  ");
}

std::string keysHelp() {
    std::size_t width = 0;
    for (const auto& info : SettingsEditor::keys()) width = std::max(width, info.key.size());
    std::string text = "Keys:\n";
    for (const auto& info : SettingsEditor::keys())
        text += "  " + info.key + std::string(width - info.key.size() + 2, ' ') + info.accepts + "\n";
    return text;
}

}  // namespace

CorvelSettings loadSettings(CliContext& context) {
    auto store = storeFor(context);
    return load(context, store).settings;
}

void registerSettingsCommands(CLI::App& app, CliContext& context) {
    auto* settings = app.add_subcommand("settings", "Show the settings and where they are kept");
    auto* set = settings->add_subcommand("set", "Change one setting (thresholds included)");
    auto key = std::make_shared<std::string>();
    auto value = std::make_shared<std::string>();
    set->add_option("key", *key, "The setting to change, for example thresholds.warningFreeFraction")->required();
    set->add_option("value", *value, "Its new value")->required();
    set->footer(keysHelp());

    set->callback([&context, key, value] {
        auto store = storeFor(context);
        const auto loaded = load(context, store);
        CorvelSettings changed;
        try {
            changed = SettingsEditor::apply(loaded.settings, *key, *value, context.machine().home());
        } catch (const SettingsError& error) {
            throw UsageError(error.what());
        }
        try {
            store.save(changed);
        } catch (const FileError& error) {
            throw CommandFailure(error.what());
        }
        if (context.json()) {
            context.printJson(settingsDocument(store, changed));
            return;
        }
        bool shown = false;
        for (const auto& [name, text] : SettingsEditor::entries(changed)) {
            if (name != *key) continue;
            context.out() << name << " = " << text << '\n';
            shown = true;
        }
        if (!shown) context.out() << *key << " removed\n";
        context.out() << context.style().dim("Saved to " + store.path().string()) << '\n';
    });

    settings->callback([&context, set] {
        if (set->parsed()) return;
        auto store = storeFor(context);
        const auto loaded = load(context, store);
        if (context.json()) {
            context.printJson(settingsDocument(store, loaded.settings));
            return;
        }
        printSettings(context, store, loaded);
    });
}

}  // namespace corvel::cli
