#include "cleanup/CleanupCandidate.h"

namespace corvel {

CleanupCandidate CleanupCandidate::from(const SpaceNode& node) {
    return {node.path,           node.name,      node.classification, node.allocatedBytes,
            node.exclusiveBytes, node.fileCount, node.lastModified};
}

}  // namespace corvel
