// Source files, places in them, and the diagnostics that name those places.
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "msl/msl.h"
#include "msl/source/limits.h"

namespace msl {

// A place in one of the files of a compilation: an offset into all their texts laid end to end.
// Zero is no place.
struct Location {
    uint32_t offset = 0;
    bool operator==(const Location&) const = default;
};

// A run of characters in one line, for underlining.
struct Range {
    Location begin;
    uint32_t length = 1;
};

class SourceManager {
  public:
    struct File {
        std::string name;
        std::string ownedText; // empty where the text belongs to the caller
        std::string_view text;
        uint32_t base = 0; // the offset of its first character
    };

    struct Place {
        const File* file = nullptr;
        uint32_t line = 0;
        uint32_t column = 0;
        std::string_view lineText;
    };

    // The text must outlive the manager.
    const File& add(std::string name, std::string_view text);
    const File& addOwned(std::string name, std::string text);

    Place resolve(Location location) const;
    uint32_t totalBytes() const { return next_; }

  private:
    std::vector<std::unique_ptr<File>> files_;
    uint32_t next_ = 1;
};

// Collects diagnostics. An error at a place that already has one is taken for a consequence of it
// and dropped, with the notes that follow it.
class Diagnostics {
  public:
    explicit Diagnostics(const SourceManager& sources) : sources_(sources) {}

    void error(Range range, std::string message);
    void warning(Range range, std::string message);
    void note(Range range, std::string message);

    // The tokens at the place came from the macro that is defined at the other one.
    void noteExpansion(Location at, Range macro) { expansions_.push_back({at, macro}); }

    // Takes what is reported while it lives as a test only: errors are counted, not kept.
    class Muted {
      public:
        explicit Muted(Diagnostics& diagnostics)
            : diagnostics_(diagnostics), errors_(diagnostics.errorCount_) {
            ++diagnostics_.muted_;
        }
        ~Muted() {
            --diagnostics_.muted_;
            diagnostics_.errorCount_ = errors_;
        }
        Muted(const Muted&) = delete;
        Muted& operator=(const Muted&) = delete;

      private:
        Diagnostics& diagnostics_;
        uint32_t errors_;
    };

    bool hasErrors() const { return errorCount_ > 0; }
    uint32_t errorCount() const { return errorCount_; }
    // No more errors are taken: every stage stops when it sees this.
    bool exhausted() const { return errorCount_ >= kMaxErrors; }
    std::vector<Diagnostic> take() { return std::move(list_); }

  private:
    void add(Severity severity, Range range, std::string message);

    const SourceManager& sources_;
    std::vector<Diagnostic> list_;
    struct Expansion {
        Location at;
        Range macro;
    };
    std::vector<Expansion> expansions_;
    std::vector<uint32_t> errorOffsets_;
    uint32_t errorCount_ = 0;
    uint32_t muted_ = 0;
    bool lastDropped_ = false;
};

// "did you mean" support: the number of single-character edits between two words, or `limit` + 1
// when it is more than `limit`.
uint32_t editDistance(std::string_view a, std::string_view b, uint32_t limit);

} // namespace msl
