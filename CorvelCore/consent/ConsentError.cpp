#include "consent/ConsentError.h"

#include "consent/ConsentScope.h"

namespace corvel {

ConsentError::ConsentError(Kind kind) : kind_(kind), what_(description()) {}

ConsentError ConsentError::requiredScopeMissing() {
    return ConsentError(Kind::requiredScopeMissing);
}

std::string ConsentError::description() const {
    std::string required;
    for (const ConsentScope scope : allCases<ConsentScope>())
        if (isRequired(scope)) required += (required.empty() ? "“" : ", “") + std::string(title(scope)) + "”";
    return "Velmora cannot work without " + required + ": that scope must stay on while you accept the terms.";
}

}  // namespace corvel
