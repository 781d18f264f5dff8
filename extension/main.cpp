#include "extension/process_entry.h"
#include "log/ls_log.h"
#include "platform/platform.h"

#include <cstdlib>

/// Found by name: the extension runtime re-enters the process through it.
extern "C" __attribute__((visibility("default"))) int VantorExtensionEntry(int argc, char** argv) {
    return vantor::processEntry(vantor::platform(), argc, argv);
}

int main(int argc, char** argv) {
    vantor::installPlatform(&vantor::systemPlatform());
    const int status = VantorExtensionEntry(argc, argv);
    vantor::LSLog::flush();
    // Nothing is torn down: connections' threads and the GPU's may still be running.
    std::_Exit(status);
}
