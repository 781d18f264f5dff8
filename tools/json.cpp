#include "tools/json.h"

#include <nlohmann/json.hpp>

namespace vantor {
namespace {

using Json = nlohmann::ordered_json;

Json converted(const PropertyList& value) {
    if (const auto* dictionary = value.dictionary()) {
        Json object = Json::object();
        for (const auto& [key, element] : *dictionary) {
            object[key] = converted(element);
        }
        return object;
    }
    if (const auto* array = value.array()) {
        Json list = Json::array();
        for (const PropertyList& element : *array) {
            list.push_back(converted(element));
        }
        return list;
    }
    if (const auto* string = value.string()) {
        return *string;
    }
    if (const auto* boolean = value.boolean()) {
        return *boolean;
    }
    if (const auto* integer = value.integer()) {
        return *integer;
    }
    if (const auto* large = value.unsignedInteger()) {
        return *large;
    }
    if (const auto* data = value.data()) {
        return data->size();
    }
    if (const auto* uid = value.uid()) {
        return uid->index;
    }
    return value.date() != nullptr ? value.date()->seconds : *value.real();
}

} // namespace

std::string toJSON(const PropertyList& value) {
    // What is no UTF-8 came from another program, and is no reason to say nothing.
    return converted(value).dump(2, ' ', false, Json::error_handler_t::replace) + '\n';
}

} // namespace vantor
