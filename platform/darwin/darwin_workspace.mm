#include "platform/darwin/darwin_system.h"

#include "platform/darwin/foundation.h"

#import <AppKit/AppKit.h>

namespace vantor::darwin {

std::optional<std::filesystem::path>
DarwinWorkspace::applicationLocation(std::string_view bundleIdentifier) {
    NSURL* url = [NSWorkspace.sharedWorkspace
        URLForApplicationWithBundleIdentifier:nsString(bundleIdentifier)];
    return url != nil ? std::optional<std::filesystem::path>(url.fileSystemRepresentation)
                      : std::nullopt;
}

void DarwinWorkspace::openApplication(const std::filesystem::path& location) {
    [NSWorkspace.sharedWorkspace openApplicationAtURL:fileURL(location)
                                        configuration:[NSWorkspaceOpenConfiguration configuration]
                                    completionHandler:nil];
}

} // namespace vantor::darwin
