#pragma once
// Helpers to write encoded lists by hand.

#include "platform/property_list.h"

#include <cstdint>
#include <string_view>
#include <vector>

namespace vantor {

inline Bytes bytesOf(std::string_view text) { return {text.begin(), text.end()}; }

/// A binary property list from its objects as they are encoded, with 8-byte offsets and references
/// of `referenceSize`.
class RawBinaryList {
  public:
    explicit RawBinaryList(std::uint8_t referenceSize = 1) : referenceSize_(referenceSize) {}

    RawBinaryList& object(std::vector<std::uint8_t> encoded) {
        offsets_.push_back(bytes_.size());
        bytes_.insert(bytes_.end(), encoded.begin(), encoded.end());
        return *this;
    }

    /// An object at an offset that is not where its bytes are.
    RawBinaryList& objectAt(std::uint64_t offset) {
        offsets_.push_back(offset);
        return *this;
    }

    Bytes finish(std::uint64_t top = 0) const { return finish(top, offsets_.size()); }

    Bytes finish(std::uint64_t top, std::uint64_t announcedCount) const {
        return finish(top, announcedCount, bytes_.size());
    }

    Bytes finish(std::uint64_t top, std::uint64_t announcedCount, std::uint64_t table) const {
        Bytes out = bytes_;
        for (const std::uint64_t offset : offsets_) {
            append(out, offset);
        }
        out.resize(out.size() + 6, 0);
        out.push_back(8);
        out.push_back(referenceSize_);
        append(out, announcedCount);
        append(out, top);
        append(out, table);
        return out;
    }

  private:
    static void append(Bytes& out, std::uint64_t value) {
        for (int shift = 56; shift >= 0; shift -= 8) {
            out.push_back(static_cast<std::uint8_t>(value >> shift));
        }
    }

    std::uint8_t referenceSize_;
    Bytes bytes_ = bytesOf("bplist00");
    std::vector<std::uint64_t> offsets_;
};

} // namespace vantor
