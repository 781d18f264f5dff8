#include "extension/process_entry.h"

#include "log/ls_log.h"
#include "platform/loader.h"
#include "platform/platform.h"

#include <cstdio>
#include <cstdlib>
#include <utility>

namespace vantor {

ProcessEntry::ProcessEntry(Platform& platform, MakePrincipalObject makePrincipalObject)
    : platform_(platform), makePrincipalObject_(std::move(makePrincipalObject)) {}

int ProcessEntry::run(int argc, char** argv) {
    if (std::exchange(entered_, true)) {
        return runExtension();
    }
    return handToRuntime(argc, argv);
}

int ProcessEntry::handToRuntime(int argc, char** argv) {
    void* const found = platform_.loader().symbol("NSExtensionMain");
    if (found == nullptr) {
        LSLog::write("NSExtensionMain unavailable — cannot serve");
        return EXIT_FAILURE;
    }
    return reinterpret_cast<ExtensionMainFunction>(found)(argc, argv);
}

int ProcessEntry::runExtension() {
    if (const auto ran = platform_.appExtensionRuntime().main(makePrincipalObject_); !ran) {
        std::fprintf(stderr, "the extension runtime does not run: %s\n", ran.error().c_str());
        LSLog::flush();
        std::abort();
    }
    return EXIT_SUCCESS;
}

} // namespace vantor
