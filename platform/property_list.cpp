#include "platform/property_list.h"

#include <algorithm>
#include <limits>

namespace vantor {

PropertyListDictionary::PropertyListDictionary() = default;
PropertyListDictionary::PropertyListDictionary(std::initializer_list<Entry> entries)
    : entries_(entries) {}
PropertyListDictionary::PropertyListDictionary(const PropertyListDictionary&) = default;
PropertyListDictionary::PropertyListDictionary(PropertyListDictionary&&) noexcept = default;
PropertyListDictionary& PropertyListDictionary::operator=(const PropertyListDictionary&) = default;
PropertyListDictionary&
PropertyListDictionary::operator=(PropertyListDictionary&&) noexcept = default;
PropertyListDictionary::~PropertyListDictionary() = default;

std::size_t PropertyListDictionary::size() const { return entries_.size(); }

const PropertyListDictionary::Entry* PropertyListDictionary::begin() const {
    return entries_.data();
}

const PropertyListDictionary::Entry* PropertyListDictionary::end() const {
    return entries_.data() + entries_.size();
}

const PropertyList* PropertyListDictionary::find(std::string_view key) const {
    const auto it = std::find_if(entries_.begin(), entries_.end(),
                                 [key](const Entry& entry) { return entry.key == key; });
    return it == entries_.end() ? nullptr : &it->value;
}

void PropertyListDictionary::set(std::string_view key, PropertyList value) {
    for (Entry& entry : entries_) {
        if (entry.key == key) {
            entry.value = std::move(value);
            return;
        }
    }
    append(std::string(key), std::move(value));
}

void PropertyListDictionary::reserve(std::size_t count) { entries_.reserve(count); }

PropertyList& PropertyListDictionary::append(std::string key, PropertyList value) {
    return entries_.emplace_back(Entry{std::move(key), std::move(value)}).value;
}

bool PropertyListDictionary::erase(std::string_view key) {
    return std::erase_if(entries_, [key](const Entry& entry) { return entry.key == key; }) > 0;
}

bool PropertyListDictionary::operator==(const PropertyListDictionary& other) const {
    if (size() != other.size()) {
        return false;
    }
    return std::all_of(entries_.begin(), entries_.end(), [&other](const Entry& entry) {
        const PropertyList* value = other.find(entry.key);
        return value != nullptr && *value == entry.value;
    });
}

PropertyList::PropertyList(std::uint64_t value) : value_(value) {
    if (value <= static_cast<std::uint64_t>(std::numeric_limits<std::int64_t>::max())) {
        value_ = static_cast<std::int64_t>(value);
    }
}

bool PropertyList::numberAsDouble(double& out) const {
    if (const bool* flag = boolean()) {
        out = *flag ? 1.0 : 0.0;
    } else if (const std::int64_t* whole = integer()) {
        out = static_cast<double>(*whole);
    } else if (const std::uint64_t* large = unsignedInteger()) {
        out = static_cast<double>(*large);
    } else if (const double* number = real()) {
        out = *number;
    } else {
        return false;
    }
    return true;
}

} // namespace vantor
