#pragma once
// The host application's hand on the state file of a fake platform.

#include "library/app_state.h"
#include "tests/support/fake_platform.h"

#include <fstream>
#include <string>
#include <utility>
#include <vector>

namespace vantor {

struct TestDisplay {
    std::string key;
    std::string id;
    std::string source;
};

/// Writes these bytes in place of the state before.
inline void writeStateBytes(FakePlatform& platform, const Bytes& bytes) {
    const auto file = appStateURL(platform);
    std::filesystem::create_directories(file.parent_path());
    std::ofstream(file, std::ios::binary)
        .write(reinterpret_cast<const char*>(bytes.data()),
               static_cast<std::streamsize>(bytes.size()));
}

inline void writeStateRoot(FakePlatform& platform, const PropertyList& root) {
    writeStateBytes(platform, platform.propertyLists().writeBinary(root));
}

/// Writes a state that shows these shaders, in place of the one before.
inline void writeState(FakePlatform& platform, const std::vector<TestDisplay>& displays,
                       PropertyList::Array nonShader = {}) {
    PropertyListDictionary entries;
    for (const TestDisplay& display : displays) {
        entries.set(display.key,
                    PropertyListDictionary{{.key = "id", .value = display.id},
                                           {.key = "source", .value = display.source}});
    }
    PropertyListDictionary desktop{{.key = "displays", .value = std::move(entries)},
                                   {.key = "nonShader", .value = std::move(nonShader)}};
    writeStateRoot(platform,
                   PropertyListDictionary{{.key = "desktop", .value = std::move(desktop)}});
}

} // namespace vantor
