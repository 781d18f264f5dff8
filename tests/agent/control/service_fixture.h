#pragma once
// A control service over a fake controller, in a loop that callers on other threads are served by.

#include "agent/control/control_client.h"
#include "agent/control/control_service.h"
#include "platform/linux/main_loop.h"
#include "tests/agent/control/fake_controller.h"
#include "tests/platform/linux/system/private_bus.h"
#include "tests/support/fake_system.h"
#include "tests/support/scoped_variable.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <thread>

namespace vantor::agent {

class ServiceFixture : public testing::Test {
  protected:
    using Created = Result<std::unique_ptr<ControlService>, ControlService::Problem>;

    std::filesystem::path socketFile() const { return folder_.path() / "vantor/agent.sock"; }

    Created create(const std::optional<std::filesystem::path>& file) {
        return ControlService::create(loop_, log_, controller_, file);
    }
    void serve(const std::optional<std::filesystem::path>& file) {
        auto created = create(file);
        ASSERT_TRUE(created) << created.error().sentence;
        service_ = std::move(*created);
    }

    /// Runs the loop until `caller`, on a thread of its own, has ended.
    void during(const std::function<void()>& caller) {
        std::thread thread([&] {
            caller();
            loop_.stop(0);
        });
        loop_.run();
        thread.join();
    }

    /// What the agent at the socket, or else on the bus, answers.
    Result<std::string, std::string> ask(const std::optional<std::filesystem::path>& file,
                                         const char* method,
                                         const std::vector<std::string>& arguments = {}) {
        Result<std::string, std::string> answer = Failure{std::string("no agent runs")};
        during([&] {
            if (auto client = ControlClient::connect(file)) {
                answer = client->call(method, arguments, ControlClient::Patience(60));
            }
        });
        return answer;
    }

    const ScopedVariable bus_{"DBUS_SESSION_BUS_ADDRESS", "unix:path=/nonexistent"};
    TemporaryFolder folder_;
    MainLoop loop_;
    FakeUnifiedLog log_;
    FakeController controller_;
    std::unique_ptr<ControlService> service_;
};

} // namespace vantor::agent
