// The extension's program.

#include "extension/lock_screen_extension.h"
#include "extension/process_entry.h"
#include "extension/services.h"
#include "platform/platform.h"

#include <memory>

/// The process's entry, under the name by which the extension runtime finds it again.
extern "C" __attribute__((visibility("default"))) int VantorExtensionEntry(int argc, char** argv);

int VantorExtensionEntry(int argc, char** argv) {
    using namespace vantor;
    static ProcessEntry entry(
        platform(), [] { return std::make_unique<LockScreenExtension>(Services::shared()); });
    return entry.run(argc, argv);
}

int main(int argc, char** argv) {
    vantor::installPlatform(&vantor::systemPlatform());
    return VantorExtensionEntry(argc, argv);
}
