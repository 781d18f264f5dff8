#pragma once
// Keyed archives on Linux, as published ($version 100000). Free of state; any thread.

#include "platform/keyed_archive.h"

namespace vantor {

class ArchiveKeyedArchiving final : public KeyedArchiving {
  public:
    Result<Bytes> archiveRootObject(std::string_view className,
                                    const std::function<void(KeyedEncoder&)>& encode) override;
    Result<std::unique_ptr<KeyedUnarchiver>>
    unarchiver(std::span<const std::uint8_t> archive) override;
};

} // namespace vantor
