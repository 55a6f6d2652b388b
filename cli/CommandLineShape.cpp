#include "CommandLineShape.h"

#include <array>

namespace corvel::cli {
namespace {

// "UINT:INT in [1 - 1000000]" -> "UINT": the name without the validators CLI11 appends.
std::string bareValueName(const std::string& typeName) {
    return typeName.substr(0, typeName.find_first_of(": "));
}

OptionShape optionShape(const CLI::Option& option) {
    OptionShape shape;
    if (option.get_positional() && !option.nonpositional()) {
        shape.names = {option.get_name(true, false)};
    } else {
        for (const auto& name : option.get_snames()) shape.names.push_back("-" + name);
        for (const auto& name : option.get_lnames()) shape.names.push_back("--" + name);
    }
    // A flag expects no value; an option whose value is optional is offered as a flag too.
    if (option.get_items_expected_min() > 0 || option.get_positional()) {
        shape.valueName = bareValueName(option.get_type_name());
        if (shape.valueName.empty()) shape.valueName = "VALUE";
        shape.value = CommandLineShape::valueKindOf(shape.valueName);
    }
    shape.description = option.get_description();
    shape.required = option.get_required();
    shape.repeats =
        option.get_items_expected_max() > 1 || option.get_multi_option_policy() == CLI::MultiOptionPolicy::TakeAll;
    return shape;
}

}  // namespace

ValueKind CommandLineShape::valueKindOf(const std::string& valueName) {
    static const std::array<const char*, 4> files{"FILE", "PATH", "SOURCE", "VOLUME_OR_FOLDER"};
    if (valueName == "DIR") return ValueKind::folder;
    for (const char* name : files)
        if (valueName == name) return ValueKind::file;
    return ValueKind::word;
}

CommandShape CommandLineShape::of(const CLI::App& app) {
    CommandShape shape;
    shape.name = app.get_name();
    shape.description = app.get_description();
    for (const CLI::Option* option : app.get_options()) {
        OptionShape described = optionShape(*option);
        if (described.names.empty()) continue;
        (option->nonpositional() ? shape.options : shape.operands).push_back(std::move(described));
    }
    for (const CLI::App* command : app.get_subcommands([](const CLI::App*) { return true; }))
        shape.commands.push_back(of(*command));
    return shape;
}

}  // namespace corvel::cli
