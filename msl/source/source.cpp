#include "msl/source/source.h"

#include <algorithm>
#include <array>

namespace msl {

const SourceManager::File& SourceManager::add(std::string name, std::string_view text) {
    auto file = std::make_unique<File>();
    file->name = std::move(name);
    file->text = text;
    file->base = next_;
    // One more than the text, so that the end of a file is a place of its own.
    next_ += static_cast<uint32_t>(text.size()) + 1;
    files_.push_back(std::move(file));
    return *files_.back();
}

const SourceManager::File& SourceManager::addOwned(std::string name, std::string text) {
    auto owned = std::make_unique<File>();
    owned->name = std::move(name);
    owned->ownedText = std::move(text);
    owned->text = owned->ownedText;
    owned->base = next_;
    next_ += static_cast<uint32_t>(owned->text.size()) + 1;
    files_.push_back(std::move(owned));
    return *files_.back();
}

SourceManager::Place SourceManager::resolve(Location location) const {
    Place place;
    for (const auto& file : files_) {
        if (location.offset < file->base || location.offset > file->base + file->text.size()) {
            continue;
        }
        const auto offset = location.offset - file->base;
        const auto before = file->text.substr(0, offset);
        const auto lastBreak = before.rfind('\n');
        const size_t start = lastBreak == std::string_view::npos ? 0 : lastBreak + 1;
        auto end = file->text.find('\n', offset);
        if (end == std::string_view::npos) {
            end = file->text.size();
        }
        place.file = file.get();
        place.line = static_cast<uint32_t>(std::count(before.begin(), before.end(), '\n')) + 1;
        place.column = static_cast<uint32_t>(offset - start) + 1;
        place.lineText = file->text.substr(start, end - start);
        if (!place.lineText.empty() && place.lineText.back() == '\r') {
            place.lineText.remove_suffix(1);
        }
        return place;
    }
    return place;
}

void Diagnostics::error(Range range, std::string message) {
    if (muted_ > 0) {
        ++errorCount_;
        return;
    }
    if (exhausted()) {
        lastDropped_ = true;
        return;
    }
    if (std::find(errorOffsets_.begin(), errorOffsets_.end(), range.begin.offset) !=
        errorOffsets_.end()) {
        lastDropped_ = true;
        return;
    }
    errorOffsets_.push_back(range.begin.offset);
    lastDropped_ = false;
    add(Severity::error, range, std::move(message));
    ++errorCount_;
    for (const auto& expansion : expansions_) {
        if (expansion.at == range.begin) {
            add(Severity::note, expansion.macro, "it stands in this macro");
            break;
        }
    }
    if (exhausted()) {
        add(Severity::note, Range{}, "no further errors are reported");
    }
}

void Diagnostics::warning(Range range, std::string message) {
    if (muted_ == 0 && list_.size() < size_t{kMaxErrors} * 4) {
        add(Severity::warning, range, std::move(message));
    }
}

void Diagnostics::note(Range range, std::string message) {
    if (muted_ == 0 && !lastDropped_ && list_.size() < size_t{kMaxErrors} * 8) {
        add(Severity::note, range, std::move(message));
    }
}

void Diagnostics::add(Severity severity, Range range, std::string message) {
    const auto place = sources_.resolve(range.begin);
    Diagnostic diagnostic;
    diagnostic.severity = severity;
    diagnostic.message = std::move(message);
    if (place.file != nullptr) {
        diagnostic.file = place.file->name;
        diagnostic.line = place.line;
        diagnostic.column = place.column;
        // A hostile line may be megabytes long; a person reads the part around the place.
        constexpr size_t kMaxLineText = 400;
        diagnostic.sourceLine = std::string(place.lineText.substr(0, kMaxLineText));
        const auto rest =
            place.lineText.size() >= place.column ? place.lineText.size() - place.column + 1 : 1;
        diagnostic.underlineLength =
            std::max<uint32_t>(1, std::min(range.length, static_cast<uint32_t>(rest)));
    }
    list_.push_back(std::move(diagnostic));
}

std::string toText(const Diagnostic& diagnostic) {
    static constexpr std::array<std::string_view, 3> kNames{"note", "warning", "error"};
    std::string text;
    if (diagnostic.line > 0) {
        text += diagnostic.file + ":" + std::to_string(diagnostic.line) + ":" +
                std::to_string(diagnostic.column) + ": ";
    }
    text += kNames[static_cast<size_t>(diagnostic.severity)];
    text += ": " + diagnostic.message + "\n";
    if (diagnostic.line == 0) {
        return text;
    }
    text += diagnostic.sourceLine + "\n";
    if (diagnostic.column > diagnostic.sourceLine.size() + 1) {
        return text;
    }
    // Tabs are kept, so that the caret stands under its character whatever a tab is worth.
    for (uint32_t i = 0; i + 1 < diagnostic.column; ++i) {
        text += diagnostic.sourceLine[i] == '\t' ? '\t' : ' ';
    }
    text += '^';
    text.append(diagnostic.underlineLength - 1, '~');
    text += '\n';
    return text;
}

uint32_t editDistance(std::string_view a, std::string_view b, uint32_t limit) {
    constexpr size_t kLongest = 40;
    if (a.size() > kLongest || b.size() > kLongest ||
        (a.size() > b.size() ? a.size() - b.size() : b.size() - a.size()) > limit) {
        return limit + 1;
    }
    std::array<uint32_t, kLongest + 1> row{};
    for (uint32_t j = 0; j <= b.size(); ++j) {
        row[j] = j;
    }
    for (uint32_t i = 1; i <= a.size(); ++i) {
        uint32_t diagonal = row[0];
        row[0] = i;
        for (uint32_t j = 1; j <= b.size(); ++j) {
            const uint32_t substituted = diagonal + (a[i - 1] == b[j - 1] ? 0U : 1U);
            diagonal = row[j];
            row[j] = std::min({substituted, row[j] + 1, row[j - 1] + 1});
        }
    }
    return std::min(row[b.size()], limit + 1);
}

} // namespace msl
