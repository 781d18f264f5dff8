#include "platform/linux/archive/plain_class.h"

#include <array>
#include <utility>

namespace vantor::archive {
namespace {

/// The immutable name of each kind comes before its mutable one.
constexpr std::array<std::pair<std::string_view, PlainClass>, 12> kNames{{
    {"NSString", PlainClass::string},
    {"NSNumber", PlainClass::number},
    {"NSData", PlainClass::data},
    {"NSArray", PlainClass::array},
    {"NSDictionary", PlainClass::dictionary},
    {"NSURL", PlainClass::url},
    {"NSError", PlainClass::error},
    {"NSDate", PlainClass::date},
    {"NSMutableString", PlainClass::string},
    {"NSMutableData", PlainClass::data},
    {"NSMutableArray", PlainClass::array},
    {"NSMutableDictionary", PlainClass::dictionary},
}};

} // namespace

PlainClass plainClass(std::string_view archivedName) {
    for (const auto& [name, kind] : kNames) {
        if (name == archivedName) {
            return kind;
        }
    }
    return PlainClass::none;
}

std::string_view plainClassName(PlainClass kind) {
    for (const auto& [name, named] : kNames) {
        if (named == kind) {
            return name;
        }
    }
    return {};
}

} // namespace vantor::archive
