#pragma once
// The extension's objects over the fake platform, with the agent's classes known.

#include "library/lock_screen_library.h"
#include "render/surface_registry.h"
#include "tests/support/fake_platform.h"
#include "tests/support/fake_xpc.h"

#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace vantor {

class ExtensionTest : public FakePlatformTest {
  protected:
    /// The one surface that is registered.
    SurfaceRegistry::Surface& onlySurface() {
        fakeRequire(registry.surfaces().size() == 1, "one surface is registered");
        return *registry.surfaces().begin()->second;
    }

    ObjectRef object(std::string_view className, ReflectedRef reflection = nullptr) {
        auto made = std::make_shared<FakeObject>(*platform.objectRuntime().classNamed(className));
        made->reflection = std::move(reflection);
        return made;
    }
    ObjectRef identifier(const UUID& id) {
        return object("WallpaperIDXPC",
                      FakeReflected::tree({{"identifier", FakeReflected::leaf(id)}}));
    }

    struct Request {
        std::optional<std::string> configuration{};
        std::optional<Size> size{};
        std::optional<double> scale{};
        std::optional<std::uint32_t> displayID{};
        std::optional<bool> isPreview{};
        std::optional<std::string> presentationMode{};
        std::optional<std::string> activityState{};
    };
    ObjectRef request(std::string_view className, const Request& request) {
        std::vector<std::pair<std::string, ReflectedRef>> destination;
        if (request.size) {
            destination.emplace_back("size", FakeReflected::leaf(*request.size));
        }
        if (request.scale) {
            destination.emplace_back("scaleFactor", FakeReflected::leaf(*request.scale));
        }
        if (request.displayID) {
            destination.emplace_back("directDisplayID", FakeReflected::leaf(*request.displayID));
        }
        std::vector<std::pair<std::string, ReflectedRef>> members;
        if (request.configuration) {
            members.emplace_back("configuration",
                                 FakeReflected::leaf(Bytes(request.configuration->begin(),
                                                           request.configuration->end())));
        }
        members.emplace_back("destination", FakeReflected::tree(std::move(destination)));
        if (request.isPreview) {
            members.emplace_back("isPreview", FakeReflected::leaf(*request.isPreview));
        }
        if (request.presentationMode) {
            members.emplace_back(
                "presentationMode",
                FakeReflected::leaf(FakeReflected::EnumerationCase{*request.presentationMode}));
        }
        if (request.activityState) {
            members.emplace_back(
                "activityState",
                FakeReflected::leaf(FakeReflected::EnumerationCase{*request.activityState}));
        }
        return object(className,
                      FakeReflected::tree({{"request", FakeReflected::tree(std::move(members))}}));
    }
    ObjectRef creation(const Request& given) {
        return request("WallpaperCreationRequestXPC", given);
    }
    ObjectRef update(const Request& given) { return request("WallpaperUpdateRequestXPC", given); }

    ExtensionTest() { platform.addAgentClasses(); }

    FakeRemoteContextClass& contexts = platform.addRemoteContexts();
    ShaderGPU shaderGPU{platform.gpu(), platform.images()};
    LockScreenLibrary library{platform, shaderGPU};
    SurfaceRegistry registry{platform, shaderGPU, library};
};

} // namespace vantor
