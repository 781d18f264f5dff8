#include "agent/output/output_backends.h"

#include "agent/output/headless/headless_backend.h"

#include <utility>
#include <vector>

namespace vantor::agent {
namespace {

std::vector<OutputDescription> virtualDisplays(const OutputRequest& request,
                                               std::uint32_t refreshRate) {
    std::vector<OutputDescription> displays;
    for (const DisplayMode& mode : request.displays) {
        displays.push_back({.connector = "headless-" + std::to_string(displays.size() + 1),
                            .width = mode.width,
                            .height = mode.height,
                            .scale = mode.scale,
                            .refreshRate = static_cast<double>(refreshRate)});
    }
    return displays;
}

} // namespace

Result<std::unique_ptr<OutputBackend>, std::string> makeOutputs(MainLoop& loop,
                                                                const OutputRequest& request,
                                                                std::uint32_t refreshRate,
                                                                OutputEvents events) {
    switch (request.kind) {
    case OutputKind::headless:
        return makeHeadless(loop, virtualDisplays(request, refreshRate), std::move(events));
    case OutputKind::window:
    case OutputKind::background:
        break;
    }
    return Failure{std::string("there is no display server")};
}

} // namespace vantor::agent
