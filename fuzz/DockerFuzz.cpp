// Every reader of the docker program's output. They are lenient by contract: only "docker info"
// may refuse its input, with the documented error.
#include "FuzzInput.h"
#include "docker/DockerParser.h"
#include "storage/DiskutilParseError.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace corvel;
    const auto input = fuzz::text(data, size);
    try {
        (void)DockerParser::engineInfo(input);
    } catch (const DiskutilParseError&) {
    }
    const auto verbose = DockerParser::verbose(input);
    (void)DockerParser::containers(input);
    (void)DockerParser::mounts(input);
    (void)DockerParser::images(input, verbose);
    (void)DockerParser::volumes(input);
    (void)DockerParser::networks(input);
    (void)DockerParser::composeProjects(input);
    (void)DockerParser::diskUsage(input);
    (void)DockerParser::containerSizes(verbose);
    (void)DockerParser::volumeSizes(verbose);
    (void)DockerParser::buildCacheBytes(verbose);
    (void)DockerParser::unreadableLines(input);
    (void)DockerParser::documentProblem(input, true);
    (void)DockerParser::size(input);
    (void)DockerParser::labels(input);
    return 0;
}
