#include "common/Platform.h"

namespace corvel {

Platform hostPlatform() {
    return Platform::linux;
}

}  // namespace corvel
