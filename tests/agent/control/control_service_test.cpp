#include "agent/control/control_service.h"

#include "agent/control/control_interface.h"
#include "agent/control/picker_json.h"
#include "agent/control/status_json.h"
#include "tests/agent/control/service_fixture.h"
#include "tests/support/raw_bus.h"

#include <fcntl.h>
#include <fstream>
#include <iterator>
#include <regex>
#include <set>
#include <sys/socket.h>

namespace vantor::agent {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;

constexpr const char* kProperties = "org.freedesktop.DBus.Properties";

enum class Way { socket, bus };

/// What holds in whichever way the agent is asked.
class EitherWay : public ServiceFixture, public testing::WithParamInterface<Way> {
  protected:
    void SetUp() override {
        if (GetParam() == Way::bus) {
            daemon_.emplace("DBUS_SESSION_BUS_ADDRESS");
        }
        controller_.now = fullStatus();
        serve(file());
    }
    std::optional<std::filesystem::path> file() const {
        return GetParam() == Way::socket ? std::optional(socketFile()) : std::nullopt;
    }
    Result<std::string, std::string> ask(const char* method,
                                         const std::vector<std::string>& arguments = {}) {
        return ServiceFixture::ask(file(), method, arguments);
    }

    // On a caller's thread.

    /// A connection without any of the agent's own code for callers.
    xpc::Bus connect() const {
        sd_bus* bus = nullptr;
        if (GetParam() == Way::bus) {
            EXPECT_GE(sd_bus_open_user(&bus), 0);
        } else {
            EXPECT_GE(sd_bus_new(&bus), 0);
            EXPECT_GE(sd_bus_set_address(bus, ("unix:path=" + socketFile().string()).c_str()), 0);
            EXPECT_GE(sd_bus_start(bus), 0);
        }
        return xpc::Bus(bus);
    }
    const char* destination() const { return GetParam() == Way::bus ? kControlBusName : nullptr; }

  private:
    std::optional<PrivateBus> daemon_;
};

INSTANTIATE_TEST_SUITE_P(Control, EitherWay, testing::Values(Way::socket, Way::bus),
                         [](const testing::TestParamInfo<Way>& way) {
                             return way.param == Way::socket ? "Socket" : "Bus";
                         });

TEST_P(EitherWay, TheStatusIsTheControllersAsJson) {
    auto answer = ask("GetStatus");
    ASSERT_TRUE(answer) << answer.error();
    EXPECT_EQ(readStatusJson(*answer), fullStatus());
}

TEST_P(EitherWay, EveryMethodReachesTheController) {
    for (const char* method : {"Lock", "Unlock", "Pause", "Resume", "Reload", "Quit"}) {
        const auto answer = ask(method);
        EXPECT_TRUE(answer) << answer.error();
    }
    EXPECT_TRUE(ask("Choose", {"DP-1", "builtin.smoke"}));
    EXPECT_THAT(controller_.asked, ElementsAre("lock", "unlock", "pause", "resume", "reload",
                                               "quit", "choose DP-1 builtin.smoke"));
}

TEST_P(EitherWay, WhatCannotBeDoneIsAnsweredWithTheControllersSentence) {
    controller_.answer = Failure{std::string("output \"x\" is not known")};
    EXPECT_EQ(ask("Choose", {"x", "y"}).error(), "output \"x\" is not known");
    controller_.answer = Failure{std::string("agent.toml:1:1: \xff")};
    EXPECT_EQ(ask("Reload").error(), "agent.toml:1:1: ?") << "D-Bus carries only text";
}

TEST_P(EitherWay, MistakesAndFailuresHaveDifferentNames) {
    controller_.answer = Failure{std::string("why")};
    during([&] {
        const xpc::Bus bus = connect();
        sd_bus_error error{};
        EXPECT_LT(sd_bus_call_method(bus.get(), destination(), kControlPath, kControlInterface,
                                     "Choose", &error, nullptr, "ss", "a", "b"),
                  0);
        EXPECT_STREQ(error.name, "com.nimbara.vantor.Error.Refused");
        EXPECT_STREQ(error.message, "why");
        sd_bus_error_free(&error);
        EXPECT_LT(sd_bus_call_method(bus.get(), destination(), kControlPath, kControlInterface,
                                     "Reload", &error, nullptr, ""),
                  0);
        EXPECT_STREQ(error.name, "com.nimbara.vantor.Error.Failed");
        sd_bus_error_free(&error);
        EXPECT_LT(sd_bus_call_method(bus.get(), destination(), kControlPath, kControlInterface,
                                     "Choose", &error, nullptr, "s", "a"),
                  0);
        EXPECT_STREQ(error.name, "org.freedesktop.DBus.Error.InvalidArgs");
        sd_bus_error_free(&error);
    });
    EXPECT_THAT(controller_.asked, ElementsAre("choose a b", "reload"));
}

TEST_P(EitherWay, ThePickerIsAnsweredAtOnceOrWhenItComes) {
    controller_.offered = fullPicker();
    EXPECT_EQ(readPickerJson(*ask("GetPicker")), fullPicker());

    controller_.pickerIsReady = false;
    controller_.pickerAsked = [this] {
        loop_.async([this] { controller_.waiting.at(0)(fullPicker()); });
    };
    EXPECT_EQ(readPickerJson(*ask("GetPicker")), fullPicker());

    controller_.pickerAsked = nullptr;
    controller_.pickerIsReady = true;
    controller_.offered = Failure{std::string("no extension runs")};
    EXPECT_EQ(ask("GetPicker").error(), "no extension runs");
}

TEST_P(EitherWay, APickerThatComesAfterItsCallerHasGoneIsDropped) {
    controller_.pickerIsReady = false;
    during([&] {
        auto client = ControlClient::connect(file());
        ASSERT_TRUE(client);
        EXPECT_TRUE(client->call("Lock"));
        const auto answer = client->call("GetPicker", {}, ControlClient::Patience(0));
        EXPECT_FALSE(answer);
    });
    EXPECT_TRUE(ask("Unlock"));
    for (const auto& done : controller_.waiting) {
        done(fullPicker());
    }
    controller_.waiting.clear();
    EXPECT_TRUE(ask("Lock"));
}

TEST_P(EitherWay, OnlySoManyCallersWaitForThePickerAtATime) {
    controller_.pickerIsReady = false;
    during([&] {
        const xpc::Bus bus = connect();
        for (int i = 0; i < 64; ++i) {
            EXPECT_GE(sd_bus_call_method_async(bus.get(), nullptr, destination(), kControlPath,
                                               kControlInterface, "GetPicker", nullptr, nullptr,
                                               ""),
                      0);
        }
        sd_bus_error error{};
        EXPECT_LT(sd_bus_call_method(bus.get(), destination(), kControlPath, kControlInterface,
                                     "GetPicker", &error, nullptr, ""),
                  0);
        EXPECT_STREQ(error.message, "64 calls wait for the picker already");
        sd_bus_error_free(&error);
    });
    controller_.waiting.clear();
    controller_.pickerIsReady = true;
    EXPECT_TRUE(ask("GetPicker"));
}

TEST_P(EitherWay, ThePropertiesSayWhatTheStatusSays) {
    during([&] {
        const xpc::Bus bus = connect();
        sd_bus_message* made = nullptr;
        const auto read = [&](const char* name, const char* type) {
            EXPECT_GE(sd_bus_get_property(bus.get(), destination(), kControlPath, kControlInterface,
                                          name, nullptr, &made, type),
                      0)
                << name;
            return xpc::Message(made);
        };
        const char* text = nullptr;
        int number = 0;
        const xpc::Message version = read("Version", "s");
        sd_bus_message_read(version.get(), "s", &text);
        EXPECT_STREQ(text, "1.2");
        for (const auto& [name, expected] :
             {std::pair("Locked", 1), {"Paused", 0}, {"OnBattery", 1}}) {
            sd_bus_message_read(read(name, "b").get(), "b", &number);
            EXPECT_EQ(number, expected) << name;
        }
        sd_bus_message_read(read("ProcessId", "i").get(), "i", &number);
        EXPECT_EQ(number, 4711);
        sd_bus_message_read(read("ExtensionProcessId", "i").get(), "i", &number);
        EXPECT_EQ(number, 4712);

        const xpc::Message outputs = read("Outputs", "a(usssuuddssssass)");
        ASSERT_GE(sd_bus_message_enter_container(outputs.get(), 'a', "(usssuuddssssass)"), 0);
        ASSERT_GT(sd_bus_message_enter_container(outputs.get(), 'r', "usssuuddssssass"), 0);
        std::uint32_t display = 0;
        std::uint32_t width = 0;
        std::uint32_t height = 0;
        double scale = 0;
        double rate = 0;
        std::array<const char*, 7> texts{};
        ASSERT_GE(sd_bus_message_read(outputs.get(), "usssuuddssss", &display, &texts[0], &texts[1],
                                      &texts[2], &width, &height, &scale, &rate, &texts[3],
                                      &texts[4], &texts[5], &texts[6]),
                  0);
        EXPECT_EQ(display, 1U);
        EXPECT_EQ(width, 3840U);
        EXPECT_EQ(height, 2160U);
        EXPECT_EQ(scale, 1.5);
        EXPECT_EQ(rate, 59.94);
        EXPECT_THAT(std::vector<std::string>(texts.begin(), texts.end()),
                    ElementsAre("DP-1", "Acme", "Wide", "builtin.smoke",
                                "\"builtin.smoke\" ended the extension 5 times.", "locked",
                                "active"));
    });
}

/// The names that a pattern finds, once each.
std::set<std::string> namesIn(const std::string& text, const char* pattern) {
    const std::regex expression(pattern);
    std::set<std::string> names;
    for (std::sregex_iterator match(text.begin(), text.end(), expression), end; match != end;
         ++match) {
        names.insert((*match)[1]);
    }
    return names;
}

TEST_P(EitherWay, TheInterfaceDescribesItselfAsItsDocumentDoes) {
    during([&] {
        const xpc::Bus bus = connect();
        sd_bus_message* made = nullptr;
        ASSERT_GE(sd_bus_call_method(bus.get(), destination(), kControlPath,
                                     "org.freedesktop.DBus.Introspectable", "Introspect", nullptr,
                                     &made, ""),
                  0);
        const xpc::Message reply(made);
        const char* xml = nullptr;
        ASSERT_GE(sd_bus_message_read(reply.get(), "s", &xml), 0);
        const std::string text = xml;
        const std::string ours = text.substr(text.find(kControlInterface));
        std::ifstream file(VANTOR_SOURCE_FOLDER "/docs/dbus-interface.md");
        const std::string document{std::istreambuf_iterator<char>(file), {}};
        EXPECT_EQ(namesIn(document, "\n\\| `([A-Z]\\w+)` \\|"),
                  namesIn(ours, "<(?:method|property) name=\"(\\w+)\""));
        for (const char* part :
             {"<interface name=\"com.nimbara.vantor.Agent1\">", "<method name=\"GetStatus\">",
              "<arg type=\"s\" name=\"entry\" direction=\"in\"/>", "<method name=\"GetPicker\">",
              "<property name=\"Outputs\" type=\"a(usssuuddssssass)\" access=\"read\">"}) {
            EXPECT_THAT(xml, HasSubstr(part));
        }
    });
}

/// The properties that a signal names, in their order.
int collectNames(sd_bus_message* signal, void* names, sd_bus_error*) {
    auto& out = *static_cast<std::vector<std::string>*>(names);
    const char* text = nullptr;
    sd_bus_message_read(signal, "s", &text);
    sd_bus_message_enter_container(signal, 'a', "{sv}");
    while (sd_bus_message_enter_container(signal, 'e', "sv") > 0) {
        sd_bus_message_read(signal, "s", &text);
        out.emplace_back(text);
        sd_bus_message_skip(signal, "v");
        sd_bus_message_exit_container(signal);
    }
    out.emplace_back("end");
    return 0;
}

TEST_P(EitherWay, ListenersAreToldOnceOfWhatDiffers) {
    std::vector<std::string> names;
    during([&] {
        const xpc::Bus bus = connect();
        ASSERT_GE(sd_bus_match_signal(bus.get(), nullptr, nullptr, kControlPath, kProperties,
                                      "PropertiesChanged", collectNames, &names),
                  0);
        // Whoever has been answered once is a listener.
        ASSERT_GE(sd_bus_call_method(bus.get(), destination(), kControlPath, kControlInterface,
                                     "GetStatus", nullptr, nullptr, ""),
                  0);
        loop_.async([this] {
            service_->notifyChanged();
            controller_.now.isPaused = true;
            controller_.now.outputs[0].frames += 1;
            controller_.now.outputs[0].framesPerSecond = 12;
            service_->notifyChanged();
            // Differs no more when it is told.
            controller_.now.isLocked = !controller_.now.isLocked;
            service_->notifyChanged();
            controller_.now.isLocked = !controller_.now.isLocked;
        });
        const auto waitForEnds = [&](std::ptrdiff_t count) {
            while (std::ranges::count(names, "end") < count &&
                   sd_bus_process(bus.get(), nullptr) >= 0) {
                sd_bus_wait(bus.get(), 10'000);
            }
        };
        waitForEnds(1);
        loop_.async([this] {
            controller_.now.outputs[0].trouble = "";
            controller_.now.configurationError = "";
            service_->notifyChanged();
        });
        waitForEnds(2);
    });
    EXPECT_THAT(names, ElementsAre("Paused", "end", "Outputs", "ConfigurationError", "end"));
}

class ControlServiceTest : public ServiceFixture {};

TEST_F(ControlServiceTest, WithNeitherBusNorSocketSaysWhyNobodyCouldAsk) {
    const auto created = create(std::nullopt);
    ASSERT_FALSE(created);
    EXPECT_EQ(created.error().agent, std::nullopt);
    EXPECT_THAT(created.error().sentence,
                HasSubstr("nobody can ask this agent anything: the user has no folder for a "
                          "socket; no session bus: "));
}

TEST_F(ControlServiceTest, AsksNothingOfAControllerThatIsStillBeingStarted) {
    serve(socketFile());
    service_->notifyChanged();
    EXPECT_EQ(controller_.statusCalls, 0);
    loop_.turn();
    EXPECT_GT(controller_.statusCalls, 0);
}

TEST_F(ControlServiceTest, IsOneForASocketAndSaysWhoHasIt) {
    serve(socketFile());
    const auto second = create(socketFile());
    ASSERT_FALSE(second);
    EXPECT_EQ(second.error().agent, getpid());
    EXPECT_EQ(second.error().sentence,
              "an agent already runs (pid " + std::to_string(getpid()) + ")");
    EXPECT_TRUE(ask(socketFile(), "GetStatus")) << "the first is none the worse";
}

TEST_F(ControlServiceTest, WhereNobodyServesNoAgentRuns) {
    EXPECT_EQ(ControlClient::connect(socketFile()), std::nullopt);
    EXPECT_EQ(ControlClient::connect(std::nullopt), std::nullopt);
    const PrivateBus daemon("DBUS_SESSION_BUS_ADDRESS");
    EXPECT_EQ(ControlClient::connect(std::nullopt), std::nullopt);
}

TEST_F(ControlServiceTest, OfTwoAgentsOnABusTheSecondHasTheNameAfterTheFirst) {
    const PrivateBus daemon("DBUS_SESSION_BUS_ADDRESS");
    controller_.now.pid = 1;
    serve(std::nullopt);
    auto first = std::move(service_);
    FakeController other;
    other.now.pid = 2;
    auto second = ControlService::create(loop_, log_, other, socketFile());
    ASSERT_TRUE(second);
    EXPECT_THAT(log_.messages(),
                testing::Contains("another agent answers on the session bus (pid " +
                                  std::to_string(getpid()) + ")"));
    const auto pidOnBus = [&] { return readStatusJson(*ask(std::nullopt, "GetStatus"))->pid; };
    EXPECT_EQ(pidOnBus(), 1);
    first = nullptr;
    EXPECT_EQ(pidOnBus(), 2);
}

TEST_F(ControlServiceTest, ABusThatGoesAndComesBackIsFollowed) {
    PrivateBus daemon("DBUS_SESSION_BUS_ADDRESS");
    serve(std::nullopt);
    EXPECT_TRUE(ask(std::nullopt, "Lock"));
    daemon.stop();
    EXPECT_FALSE(ask(std::nullopt, "Lock"));
    daemon.start();
    while (!ask(std::nullopt, "Unlock")) {
        loop_.turn();
    }
    EXPECT_THAT(controller_.asked, ElementsAre("lock", "unlock"));
}

TEST_F(ControlServiceTest, AnAgentThatDoesNotAnswerIsNotWaitedForLonger) {
    auto socket = ControlSocket::listen(loop_, socketFile(), [](FileDescriptor) {});
    ASSERT_TRUE(socket);
    auto client = ControlClient::connect(socketFile());
    ASSERT_TRUE(client);
    EXPECT_EQ(client->call("Lock", {}, ControlClient::Patience(0)).error(),
              "the agent does not answer within 0 s");
}

TEST_F(ControlServiceTest, AnAgentThatEndsTheConnectionIsSaidTo) {
    auto socket = ControlSocket::listen(loop_, socketFile(), [](FileDescriptor) {});
    ASSERT_TRUE(socket);
    EXPECT_EQ(ask(socketFile(), "Lock").error(), "the agent closed the connection");
}

TEST_F(ControlServiceTest, OnlySoManyCallersAreConnectedAtATime) {
    serve(socketFile());
    during([&] {
        std::vector<ControlClient> clients;
        for (int i = 0; i < 16; ++i) {
            clients.push_back(*ControlClient::connect(socketFile()));
            EXPECT_TRUE(clients.back().call("GetStatus"));
        }
        EXPECT_EQ(ControlClient::connect(socketFile())->call("GetStatus").error(),
                  "the agent closed the connection");
        EXPECT_TRUE(clients.front().call("GetStatus"));
        clients.pop_back();
        // The agent may hear of the end after the next call.
        while (!ControlClient::connect(socketFile())->call("GetStatus")) {
        }
    });
}

TEST_F(ControlServiceTest, ACallerThatNeverReadsIsDropped) {
    serve(socketFile());
    during([&] {
        const FileDescriptor socket = connectToControlSocket(socketFile());
        ASSERT_EQ(fcntl(socket.get(), F_SETFL, 0), 0);
        Bytes bytes = rawbus::authentication();
        std::uint32_t serial = 1;
        while (send(socket.get(), bytes.data(), bytes.size(), MSG_NOSIGNAL) >= 0) {
            bytes = rawbus::marshal(
                {.serial = ++serial, .interface = kControlInterface, .member = "GetStatus"});
        }
        EXPECT_TRUE(errno == EPIPE || errno == ECONNRESET) << std::strerror(errno);
    });
    EXPECT_TRUE(ask(socketFile(), "GetStatus"));
}

TEST_F(ControlServiceTest, ACallerThatSpeaksNonsenseIsDropped) {
    serve(socketFile());
    during([&] {
        const FileDescriptor socket = connectToControlSocket(socketFile());
        ASSERT_EQ(fcntl(socket.get(), F_SETFL, 0), 0);
        const std::string nonsense(1000, '\x7f');
        EXPECT_GT(send(socket.get(), nonsense.data(), nonsense.size(), MSG_NOSIGNAL), 0);
        char byte = 0;
        EXPECT_LE(recv(socket.get(), &byte, 1, 0), 0);
    });
    EXPECT_TRUE(ask(socketFile(), "GetStatus"));
}

TEST_F(ControlServiceTest, MayEndWithCallersConnectedAndAPickerAwaited) {
    controller_.pickerIsReady = false;
    serve(socketFile());
    controller_.pickerAsked = [this] { service_ = nullptr; };
    EXPECT_EQ(ask(socketFile(), "GetPicker").error(), "the agent closed the connection");
    ASSERT_EQ(controller_.waiting.size(), 1U);
    controller_.waiting[0](fullPicker());
}

} // namespace
} // namespace vantor::agent
