#include "common/UUID.h"

#include <uuid/uuid.h>

namespace corvel::UUID {

std::string random() {
    uuid_t value;
    uuid_generate_random(value);
    char text[37];
    uuid_unparse_upper(value, text);
    return text;
}

}  // namespace corvel::UUID
