#include "consent/Terms.h"

#include "common/SHA256.h"
#include "common/Text.h"
#include "consent/ConsentScope.h"

namespace corvel::Terms {

const std::vector<std::string>& summary() {
    static const std::vector<std::string> sentences{
        "Velmora works on this machine only and sends nothing anywhere: no account, no telemetry.",
        "It reads storage facts by running the system's own tools and by measuring the folders you choose.",
        "It never erases, formats, partitions or deletes your data; a cleanup is a simulation for you to review.",
        "Every action that changes something asks for your confirmation each time and is logged.",
        "You can change or withdraw each choice at any time; withdrawing switches every scope off.",
    };
    return sentences;
}

std::vector<std::string> lines() {
    std::vector<std::string> result{"Velmora terms " + std::string(version)};
    for (const auto& sentence : summary()) result.push_back("summary\t" + sentence);
    for (const ConsentScope scope : allCases<ConsentScope>()) {
        result.push_back("scope\t" + std::string(rawValue(scope)) + '\t' +
                         (isRequired(scope) ? "required" : "optional") + '\t' + std::string(title(scope)) + '\t' +
                         std::string(explanation(scope)));
    }
    return result;
}

std::string digestOf(const std::vector<std::string>& textLines) {
    return SHA256::hex(join(textLines, "\n"));
}

const std::string& digest() {
    static const std::string value = digestOf(lines());
    return value;
}

}  // namespace corvel::Terms
