#pragma once

#include "platform/keyed_archive.h"

namespace vantor::darwin {

/// NSKeyedArchiver and NSKeyedUnarchiver. What is archived is a carrier: another class name is an
/// error.
class DarwinKeyedArchiving : public KeyedArchiving {
  public:
    Result<Bytes> archiveRootObject(std::string_view className,
                                    const std::function<void(KeyedEncoder&)>& encode) override;
    Result<std::unique_ptr<KeyedUnarchiver>>
    unarchiver(std::span<const std::uint8_t> archive) override;
};

} // namespace vantor::darwin
