#include "common/Platform.h"

namespace corvel {

Platform hostPlatform() {
    return Platform::macos;
}

}  // namespace corvel
