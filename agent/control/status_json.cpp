#include "agent/control/status_json.h"

#include <nlohmann/json.hpp>

#include <utility>

namespace vantor::agent {
namespace {

using Json = nlohmann::ordered_json;

template <typename Value>
Json orNull(const std::optional<Value>& value) {
    return value ? Json(*value) : Json();
}

Json toJson(const OutputStatus& output) {
    return {{"display", output.display},
            {"connector", output.connector},
            {"make", output.make},
            {"model", output.model},
            {"width", output.width},
            {"height", output.height},
            {"scale", output.scale},
            {"refreshRate", output.refreshRate},
            {"choice", output.choice},
            {"setAside", orNull(output.setAside)},
            {"presentationMode", output.presentationMode},
            {"activityState", output.activityState},
            {"pauses", output.pauses},
            {"framesPerSecond", output.framesPerSecond},
            {"frames", output.frames},
            {"trouble", output.trouble}};
}

bool isOf(const Json& value, const std::string&) { return value.is_string(); }
bool isOf(const Json& value, bool) { return value.is_boolean(); }
bool isOf(const Json& value, double) { return value.is_number(); }
bool isOf(const Json& value, std::int32_t) { return value.is_number_integer(); }
bool isOf(const Json& value, std::uint32_t) { return value.is_number_unsigned(); }
bool isOf(const Json& value, std::uint64_t) { return value.is_number_unsigned(); }

template <typename Value>
void read(const Json& object, const char* name, Value& value) {
    if (const auto found = object.find(name); found != object.end() && isOf(*found, value)) {
        value = found->get<Value>();
    }
}

template <typename Value>
void read(const Json& object, const char* name, std::optional<Value>& value) {
    if (const auto found = object.find(name); found != object.end() && isOf(*found, Value())) {
        value = found->get<Value>();
    }
}

OutputStatus outputFrom(const Json& object) {
    OutputStatus output;
    read(object, "display", output.display);
    read(object, "connector", output.connector);
    read(object, "make", output.make);
    read(object, "model", output.model);
    read(object, "width", output.width);
    read(object, "height", output.height);
    read(object, "scale", output.scale);
    read(object, "refreshRate", output.refreshRate);
    read(object, "choice", output.choice);
    read(object, "setAside", output.setAside);
    read(object, "presentationMode", output.presentationMode);
    read(object, "activityState", output.activityState);
    if (const auto pauses = object.find("pauses"); pauses != object.end() && pauses->is_array()) {
        for (const Json& pause : *pauses) {
            output.pauses.push_back(pause.is_string() ? pause.get<std::string>() : std::string());
        }
    }
    read(object, "framesPerSecond", output.framesPerSecond);
    read(object, "frames", output.frames);
    read(object, "trouble", output.trouble);
    return output;
}

} // namespace

std::string statusJson(const AgentStatus& status) {
    Json outputs = Json::array();
    for (const OutputStatus& output : status.outputs) {
        outputs.push_back(toJson(output));
    }
    const Json root{{"version", status.version},
                    {"pid", status.pid},
                    {"outputKind", status.outputKind},
                    {"locked", status.isLocked},
                    {"paused", status.isPaused},
                    {"onBattery", status.isOnBattery},
                    {"memory", status.memory},
                    {"extension",
                     {{"pid", orNull(status.extension.pid)},
                      {"restarts", status.extension.restarts},
                      {"lastEnd", status.extension.lastEnd},
                      {"memory", status.extension.memory}}},
                    {"outputs", std::move(outputs)},
                    {"configurationError", status.configurationError}};
    return root.dump(2, ' ', false, Json::error_handler_t::replace);
}

std::optional<AgentStatus> readStatusJson(std::string_view text) {
    const Json root = Json::parse(text, nullptr, false);
    if (!root.is_object()) {
        return std::nullopt;
    }
    AgentStatus status;
    read(root, "version", status.version);
    read(root, "pid", status.pid);
    read(root, "outputKind", status.outputKind);
    read(root, "locked", status.isLocked);
    read(root, "paused", status.isPaused);
    read(root, "onBattery", status.isOnBattery);
    read(root, "memory", status.memory);
    if (const auto extension = root.find("extension");
        extension != root.end() && extension->is_object()) {
        read(*extension, "pid", status.extension.pid);
        read(*extension, "restarts", status.extension.restarts);
        read(*extension, "lastEnd", status.extension.lastEnd);
        read(*extension, "memory", status.extension.memory);
    }
    if (const auto outputs = root.find("outputs"); outputs != root.end() && outputs->is_array()) {
        for (const Json& output : *outputs) {
            if (output.is_object()) {
                status.outputs.push_back(outputFrom(output));
            }
        }
    }
    read(root, "configurationError", status.configurationError);
    return status;
}

} // namespace vantor::agent
