#pragma once
// A file URL of a record.

#include "platform/result.h"

#include <filesystem>
#include <string>

namespace vantor {

/// Stands for the file at `path`, which need not exist.
struct FileURL {
    std::filesystem::path path;

    /// The absolute text, "file:///…" with every byte that a path of a URL cannot hold as a percent
    /// escape (RFC 3986, sections 2.1 and 3.3). Fails for a path that is not absolute.
    Result<std::string> absoluteString() const;

    /// Letter by letter: "/a/b" is not "/a//b".
    bool operator==(const FileURL& other) const { return path.native() == other.path.native(); }
};

} // namespace vantor
