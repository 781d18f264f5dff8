#include "platform/darwin/foundation.h"

#include <objc/runtime.h>
#include <optional>
#include <utility>

namespace vantor::darwin {
namespace {

constexpr std::size_t kMaxDepth = 512;
constexpr std::size_t kMaxExpandedValues = std::size_t{1} << 18;
constexpr std::size_t kMaxExpandedBytes = std::size_t{20} << 20;

PropertyList numberOf(NSNumber* number) {
    // The two booleans are of a class of their own.
    if ([number isKindOfClass:[[NSNumber numberWithBool:YES] class]]) {
        return [number boolValue] == YES;
    }
    switch (*[number objCType]) {
    case 'd':
    case 'f':
        return [number doubleValue];
    case 'Q':
        return std::uint64_t{[number unsignedLongLongValue]};
    default:
        return std::int64_t{[number longLongValue]};
    }
}

/// Reads one graph; every value is paid for before it is made. The first failure stays.
class GraphReader {
  public:
    PropertyList read(id value, std::size_t depth) {
        if ([value isKindOfClass:[NSString class]]) {
            std::string text = stdString(value);
            take(text.size());
            return text;
        }
        if ([value isKindOfClass:[NSNumber class]]) {
            take(0);
            return numberOf(value);
        }
        if ([value isKindOfClass:[NSData class]]) {
            return take([static_cast<NSData*>(value) length]) ? bytesOf(value) : Bytes{};
        }
        if ([value isKindOfClass:[NSDate class]]) {
            take(0);
            return PropertyList::Date{[static_cast<NSDate*>(value) timeIntervalSinceReferenceDate]};
        }
        if (depth >= kMaxDepth) {
            fail("the property list nests deeper than the limit of " + std::to_string(kMaxDepth));
        } else if ([value isKindOfClass:[NSArray class]]) {
            return take(0) ? readArray(value, depth) : PropertyList();
        } else if ([value isKindOfClass:[NSDictionary class]]) {
            return take(0) ? readDictionary(value, depth) : PropertyList();
        } else {
            fail("the property list holds an object of class " +
                 std::string(class_getName([value class])));
        }
        return {};
    }

    const std::optional<std::string>& failure() const { return failure_; }

  private:
    PropertyList readArray(NSArray* values, std::size_t depth) {
        PropertyList::Array array;
        for (id value in values) {
            array.push_back(read(value, depth + 1));
            if (failure_) {
                break;
            }
        }
        return array;
    }

    PropertyList readDictionary(NSDictionary* values, std::size_t depth) {
        PropertyListDictionary dictionary;
        for (id key in values) {
            if (![key isKindOfClass:[NSString class]]) {
                fail("the property list has a key that is no text");
            }
            if (failure_) {
                break;
            }
            std::string name = stdString(key);
            take(name.size());
            dictionary.append(std::move(name), read([values objectForKey:key], depth + 1));
        }
        return dictionary;
    }

    bool take(std::size_t bytes) {
        if (values_ == 0 || bytes > bytes_) {
            fail("the property list expands beyond the limit of " +
                 std::to_string(kMaxExpandedValues) + " values and " +
                 std::to_string(kMaxExpandedBytes) + " bytes");
            return false;
        }
        --values_;
        bytes_ -= bytes;
        return true;
    }

    void fail(std::string message) {
        if (!failure_) {
            failure_ = std::move(message);
        }
    }

    std::size_t values_ = kMaxExpandedValues;
    std::size_t bytes_ = kMaxExpandedBytes;
    std::optional<std::string> failure_;
};

id graphOf(const PropertyList::Array& array) {
    NSMutableArray* graph = [NSMutableArray arrayWithCapacity:array.size()];
    for (const PropertyList& value : array) {
        id element = foundationGraph(value);
        if (element == nil) {
            return nil;
        }
        [graph addObject:element];
    }
    return graph;
}

id graphOf(const PropertyListDictionary& dictionary) {
    NSMutableDictionary* graph = [NSMutableDictionary dictionaryWithCapacity:dictionary.size()];
    for (const auto& [name, value] : dictionary) {
        NSString* key = nsString(name);
        id element = foundationGraph(value);
        if (key == nil || element == nil) {
            return nil;
        }
        [graph setObject:element forKey:key];
    }
    return graph;
}

} // namespace

NSString* nsString(std::string_view text) {
    return [[NSString alloc] initWithBytes:text.data()
                                    length:text.size()
                                  encoding:NSUTF8StringEncoding];
}

std::string stdString(NSString* text) {
    const char* bytes = [text UTF8String];
    if (bytes == nullptr) {
        return {};
    }
    return {bytes, [text lengthOfBytesUsingEncoding:NSUTF8StringEncoding]};
}

NSData* nsData(std::span<const std::uint8_t> bytes) {
    return [NSData dataWithBytes:bytes.data() length:bytes.size()];
}

Bytes bytesOf(NSData* data) {
    const auto* begin = static_cast<const std::uint8_t*>([data bytes]);
    return Bytes(begin, begin + [data length]);
}

NSURL* fileURL(const std::filesystem::path& path) {
    return [NSURL fileURLWithPath:nsString(path.native())];
}

NSError* nsError(const Error& error) {
    NSString* message = nsString(error.message);
    return [NSError errorWithDomain:nsString(error.domain)
                               code:error.code
                           userInfo:@{NSLocalizedDescriptionKey : message != nil ? message : @""}];
}

Error errorOf(NSError* error) {
    return {.domain = stdString([error domain]),
            .code = static_cast<int>([error code]),
            .message = stdString([error localizedDescription])};
}

id foundationGraph(const PropertyList& value) {
    if (const bool* flag = value.boolean()) {
        return [NSNumber numberWithBool:*flag ? YES : NO];
    }
    if (const std::int64_t* number = value.integer()) {
        return [NSNumber numberWithLongLong:*number];
    }
    if (const std::uint64_t* number = value.unsignedInteger()) {
        return [NSNumber numberWithUnsignedLongLong:*number];
    }
    if (const double* number = value.real()) {
        return [NSNumber numberWithDouble:*number];
    }
    if (const std::string* text = value.string()) {
        return nsString(*text);
    }
    if (const Bytes* data = value.data()) {
        return nsData(*data);
    }
    if (const PropertyList::Date* date = value.date()) {
        return [NSDate dateWithTimeIntervalSinceReferenceDate:date->seconds];
    }
    if (const PropertyList::Array* array = value.array()) {
        return graphOf(*array);
    }
    if (const PropertyListDictionary* dictionary = value.dictionary()) {
        return graphOf(*dictionary);
    }
    return nil;
}

Result<PropertyList> propertyListOf(id graph) {
    GraphReader reader;
    PropertyList value = reader.read(graph, 0);
    if (reader.failure()) {
        return Failure{cocoaError(kPropertyListReadCorrupt, *reader.failure())};
    }
    return value;
}

} // namespace vantor::darwin
