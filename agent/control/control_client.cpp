#include "agent/control/control_client.h"

#include "agent/control/control_interface.h"
#include "agent/control/control_socket.h"

#include <cerrno>
#include <cstring>
#include <string_view>
#include <utility>

namespace vantor::agent {
namespace {

using Clock = std::chrono::steady_clock;

std::uint64_t microsecondsUntil(Clock::time_point end) {
    const auto left =
        std::chrono::duration_cast<std::chrono::microseconds>(end - Clock::now()).count();
    // Zero would mean the library's own time.
    return left > 0 ? static_cast<std::uint64_t>(left) : 1;
}

/// Waits for the other end to know who is calling; a negative error number when it does not.
int waitUntilReady(sd_bus* bus, Clock::time_point end) {
    if (sd_bus_is_open(bus) <= 0) {
        return -ENOTCONN;
    }
    while (true) {
        int status = sd_bus_process(bus, nullptr);
        if (status < 0) {
            return status;
        }
        if (sd_bus_is_ready(bus) > 0) {
            return 0;
        }
        if (Clock::now() >= end) {
            return -ETIMEDOUT;
        }
        if (status == 0) {
            status = sd_bus_wait(bus, microsecondsUntil(end));
        }
        if (status < 0 && status != -EINTR) {
            return status;
        }
    }
}

xpc::Bus connectToSocket(const std::filesystem::path& file) {
    FileDescriptor socket = connectToControlSocket(file);
    xpc::Bus bus = socket ? xpc::openBus(socket.get(), xpc::Side::client) : nullptr;
    if (bus) {
        socket.release();
        // An agent that ends the connection at once is found out by the first call.
        sd_bus_start(bus.get());
    }
    return bus;
}

xpc::Bus connectToSessionBus() {
    sd_bus* opened = nullptr;
    if (sd_bus_open_user(&opened) < 0) {
        return nullptr;
    }
    xpc::Bus bus(opened);
    const bool agentIsThere =
        waitUntilReady(opened, Clock::now() + ControlClient::Patience(5)) >= 0 &&
        sd_bus_get_name_creds(opened, kControlBusName, 0, nullptr) >= 0;
    return agentIsThere ? std::move(bus) : nullptr;
}

std::string sentenceFor(const sd_bus_error& error, int status, ControlClient::Patience patience) {
    const std::string_view name = error.name == nullptr ? "" : error.name;
    if ((name == kControlRefused || name == kControlFailed) && error.message != nullptr) {
        return error.message;
    }
    if (status == -ETIMEDOUT) {
        return "the agent does not answer within " + std::to_string(patience.count()) + " s";
    }
    if (status == -ECONNRESET || status == -ENOTCONN || status == -EPIPE) {
        return "the agent closed the connection";
    }
    return std::string("the agent does not understand: ") +
           (error.message != nullptr ? error.message : std::strerror(-status));
}

} // namespace

std::optional<ControlClient>
ControlClient::connect(const std::optional<std::filesystem::path>& socketFile) {
    if (xpc::Bus bus = socketFile ? connectToSocket(*socketFile) : nullptr) {
        return ControlClient(std::move(bus), nullptr);
    }
    if (xpc::Bus bus = connectToSessionBus()) {
        return ControlClient(std::move(bus), kControlBusName);
    }
    return std::nullopt;
}

Result<std::string, std::string> ControlClient::call(const char* method,
                                                     const std::vector<std::string>& arguments,
                                                     Patience patience) {
    const auto end = Clock::now() + patience;
    sd_bus_error error{};
    sd_bus_message* made = nullptr;
    int status = waitUntilReady(bus_.get(), end);
    if (status >= 0) {
        status = sd_bus_message_new_method_call(bus_.get(), &made, destination_, kControlPath,
                                                kControlInterface, method);
    }
    const xpc::Message message(made);
    for (const std::string& argument : arguments) {
        if (status >= 0) {
            status = sd_bus_message_append(message.get(), "s", argument.c_str());
        }
    }
    sd_bus_message* answered = nullptr;
    if (status >= 0) {
        status = sd_bus_call(bus_.get(), message.get(), microsecondsUntil(end), &error, &answered);
    }
    const xpc::Message reply(answered);
    std::string text;
    if (status >= 0 && sd_bus_message_has_signature(reply.get(), "s") > 0) {
        const char* read = "";
        status = sd_bus_message_read(reply.get(), "s", &read);
        text = read;
    }
    if (status < 0) {
        std::string sentence = sentenceFor(error, status, patience);
        sd_bus_error_free(&error);
        return Failure{std::move(sentence)};
    }
    return text;
}

} // namespace vantor::agent
