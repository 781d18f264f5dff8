#include "agent/control/control_object.h"

#include "agent/control/control_interface.h"
#include "agent/control/picker_json.h"
#include "agent/control/status_json.h"
#include "platform/linux/system/xpc/bus_message.h"
#include "platform/utf8.h"

#include <cerrno>
#include <utility>

namespace vantor::agent {
namespace {

/// More callers than this do not wait for the picker at a time.
constexpr std::size_t kMaxPickerCalls = 64;

/// D-Bus carries nothing but UTF-8 without zeros.
std::string asText(std::string text) {
    if (!isUTF8(text) || text.find('\0') != std::string::npos) {
        for (char& byte : text) {
            byte = byte == '\0' || static_cast<unsigned char>(byte) >= 0x80 ? '?' : byte;
        }
    }
    return text;
}

// Methods. Each gives a negative error number when the call was malformed.

Controller& controllerOf(void* object) { return static_cast<ControlObject*>(object)->controller(); }

int answer(sd_bus_message* call, const Result<Done, std::string>& done, const char* failure,
           sd_bus_error* error) {
    return done ? sd_bus_reply_method_return(call, "")
                : sd_bus_error_set(error, failure, asText(done.error()).c_str());
}

int getStatus(sd_bus_message* call, void* object, sd_bus_error*) {
    return sd_bus_reply_method_return(call, "s", statusJson(controllerOf(object).status()).c_str());
}

int choose(sd_bus_message* call, void* object, sd_bus_error* error) {
    const char* output = nullptr;
    const char* entry = nullptr;
    const int status = sd_bus_message_read(call, "ss", &output, &entry);
    return status < 0
               ? status
               : answer(call, controllerOf(object).choose(output, entry), kControlRefused, error);
}

template <void (Controller::*Set)(bool), bool Value>
int set(sd_bus_message* call, void* object, sd_bus_error*) {
    (controllerOf(object).*Set)(Value);
    return sd_bus_reply_method_return(call, "");
}

int reload(sd_bus_message* call, void* object, sd_bus_error* error) {
    return answer(call, controllerOf(object).reload(), kControlFailed, error);
}

int quit(sd_bus_message* call, void* object, sd_bus_error*) {
    const int status = sd_bus_reply_method_return(call, "");
    controllerOf(object).quit();
    return status;
}

/// A call that waits for the picker, which may come after the connection has gone.
class PickerCall {
  public:
    PickerCall(sd_bus_message* call, std::shared_ptr<std::size_t> waiting)
        : call_(sd_bus_message_ref(call)), waiting_(std::move(waiting)) {
        ++*waiting_;
    }
    ~PickerCall() { --*waiting_; }
    PickerCall(const PickerCall&) = delete;
    PickerCall& operator=(const PickerCall&) = delete;

    void reply(const Result<Picker, std::string>& picker) const {
        if (picker) {
            sd_bus_reply_method_return(call_.get(), "s", pickerJson(picker.value()).c_str());
            return;
        }
        sd_bus_error failed{};
        sd_bus_error_set(&failed, kControlFailed, asText(picker.error()).c_str());
        sd_bus_reply_method_error(call_.get(), &failed);
        sd_bus_error_free(&failed);
    }

  private:
    xpc::Message call_;
    std::shared_ptr<std::size_t> waiting_;
};

int getPicker(sd_bus_message* call, void* object, sd_bus_error* error) {
    const auto& waiting = static_cast<ControlObject*>(object)->pickerCalls();
    if (*waiting >= kMaxPickerCalls) {
        const std::string sentence =
            std::to_string(*waiting) + " calls wait for the picker already";
        return sd_bus_error_set(error, kControlRefused, sentence.c_str());
    }
    controllerOf(object).picker(
        [waiter = std::make_shared<PickerCall>(call, waiting)](
            const Result<Picker, std::string>& picker) { waiter->reply(picker); });
    return 1;
}

// Properties.

int append(sd_bus_message* message, const std::string& text) {
    return sd_bus_message_append(message, "s", asText(text).c_str());
}
int append(sd_bus_message* message, bool flag) {
    return sd_bus_message_append(message, "b", int{flag});
}
int append(sd_bus_message* message, std::int32_t number) {
    return sd_bus_message_append(message, "i", number);
}
int append(sd_bus_message* message, const ExtensionStatus& extension) {
    return append(message, extension.pid.value_or(0));
}

constexpr const char* kOutputFields = "usssuuddssssass";
constexpr const char* kOutput = "(usssuuddssssass)";
constexpr const char* kOutputs = "a(usssuuddssssass)";

int append(sd_bus_message* message, const OutputStatus& output) {
    int status = sd_bus_message_open_container(message, 'r', kOutputFields);
    if (status >= 0) {
        status = sd_bus_message_append(
            message, "usssuuddssss", output.display, asText(output.connector).c_str(),
            asText(output.make).c_str(), asText(output.model).c_str(), output.width, output.height,
            output.scale, output.refreshRate, asText(output.choice).c_str(),
            asText(output.setAside.value_or("")).c_str(), asText(output.presentationMode).c_str(),
            asText(output.activityState).c_str());
    }
    if (status >= 0) {
        status = sd_bus_message_open_container(message, 'a', "s");
    }
    for (const std::string& pause : output.pauses) {
        status = status < 0 ? status : append(message, pause);
    }
    if (status >= 0) {
        status = sd_bus_message_close_container(message);
    }
    if (status >= 0) {
        status = append(message, output.trouble);
    }
    return status < 0 ? status : sd_bus_message_close_container(message);
}

int append(sd_bus_message* message, const std::vector<OutputStatus>& outputs) {
    int status = sd_bus_message_open_container(message, 'a', kOutput);
    for (const OutputStatus& output : outputs) {
        status = status < 0 ? status : append(message, output);
    }
    return status < 0 ? status : sd_bus_message_close_container(message);
}

template <auto Member>
int get(sd_bus*, const char*, const char*, const char*, sd_bus_message* reply, void* object,
        sd_bus_error*) {
    return append(reply, controllerOf(object).status().*Member);
}

/// What the properties tell of the outputs: without what changes all the time.
std::vector<OutputStatus> lasting(std::vector<OutputStatus> outputs) {
    for (OutputStatus& output : outputs) {
        output.framesPerSecond = 0;
        output.frames = 0;
    }
    return outputs;
}

constexpr std::uint64_t kAnyone = SD_BUS_VTABLE_UNPRIVILEGED;
constexpr std::uint64_t kChanges = SD_BUS_VTABLE_PROPERTY_EMITS_CHANGE;
constexpr std::uint64_t kConstant = SD_BUS_VTABLE_PROPERTY_CONST;

const sd_bus_vtable kMembers[] = {
    SD_BUS_VTABLE_START(0),
    SD_BUS_METHOD_WITH_NAMES("GetStatus", "", "", "s", SD_BUS_PARAM(status), getStatus, kAnyone),
    SD_BUS_METHOD_WITH_NAMES("Choose", "ss", SD_BUS_PARAM(output) SD_BUS_PARAM(entry), "", "",
                             choose, kAnyone),
    SD_BUS_METHOD("Lock", "", "", (set<&Controller::setLocked, true>), kAnyone),
    SD_BUS_METHOD("Unlock", "", "", (set<&Controller::setLocked, false>), kAnyone),
    SD_BUS_METHOD("Pause", "", "", (set<&Controller::setPaused, true>), kAnyone),
    SD_BUS_METHOD("Resume", "", "", (set<&Controller::setPaused, false>), kAnyone),
    SD_BUS_METHOD("Reload", "", "", reload, kAnyone),
    SD_BUS_METHOD("Quit", "", "", quit, kAnyone),
    SD_BUS_METHOD_WITH_NAMES("GetPicker", "", "", "s", SD_BUS_PARAM(picker), getPicker, kAnyone),
    SD_BUS_PROPERTY("Version", "s", get<&AgentStatus::version>, 0, kConstant),
    SD_BUS_PROPERTY("ProcessId", "i", get<&AgentStatus::pid>, 0, kConstant),
    SD_BUS_PROPERTY("OutputKind", "s", get<&AgentStatus::outputKind>, 0, kConstant),
    SD_BUS_PROPERTY("Locked", "b", get<&AgentStatus::isLocked>, 0, kChanges),
    SD_BUS_PROPERTY("Paused", "b", get<&AgentStatus::isPaused>, 0, kChanges),
    SD_BUS_PROPERTY("OnBattery", "b", get<&AgentStatus::isOnBattery>, 0, kChanges),
    SD_BUS_PROPERTY("ExtensionProcessId", "i", get<&AgentStatus::extension>, 0, kChanges),
    SD_BUS_PROPERTY("Outputs", kOutputs, get<&AgentStatus::outputs>, 0, kChanges),
    SD_BUS_PROPERTY("ConfigurationError", "s", get<&AgentStatus::configurationError>, 0, kChanges),
    SD_BUS_VTABLE_END};

} // namespace

ControlObject::ControlObject(Controller& controller) : controller_(controller) {}

int ControlObject::offerOn(sd_bus* bus) {
    return sd_bus_add_object_vtable(bus, nullptr, kControlPath, kControlInterface, kMembers, this);
}

std::vector<const char*> ControlObject::takeChanges() {
    AgentStatus now = controller_.status();
    now.outputs = lasting(std::move(now.outputs));
    const AgentStatus before = std::exchange(told_, now).value_or(now);
    std::vector<const char*> names;
    const auto note = [&names](const char* name, bool changed) {
        if (changed) {
            names.push_back(name);
        }
    };
    note("Locked", now.isLocked != before.isLocked);
    note("Paused", now.isPaused != before.isPaused);
    note("OnBattery", now.isOnBattery != before.isOnBattery);
    note("ExtensionProcessId", now.extension.pid != before.extension.pid);
    note("Outputs", now.outputs != before.outputs);
    note("ConfigurationError", now.configurationError != before.configurationError);
    return names;
}

} // namespace vantor::agent
