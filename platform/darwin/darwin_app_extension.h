#pragma once

#include "platform/app_extension.h"

namespace vantor::darwin {

/// ExtensionFoundation, through Swift.
class DarwinAppExtensionRuntime : public AppExtensionRuntime {
  public:
    Result<Done, std::string>
    main(const std::function<std::unique_ptr<AppExtension>()>& makePrincipalObject) override;
};

} // namespace vantor::darwin
