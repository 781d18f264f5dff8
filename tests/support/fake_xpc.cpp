#include "tests/support/fake_xpc.h"

#include <algorithm>
#include <utility>

namespace vantor {
namespace {

class CatchingSink : public ReplySink {
  public:
    explicit CatchingSink(CaughtReplyRef into) : into_(std::move(into)) {}

    void error(const std::optional<Error>& error) override {
        ++into_->count;
        into_->error = error;
    }
    void object(const ObjectRef& object, const std::optional<Error>& error) override {
        ++into_->count;
        into_->object = object;
        into_->error = error;
    }
    void boolean(bool value, const std::optional<Error>& error) override {
        ++into_->count;
        into_->boolean = value;
        into_->error = error;
    }

  private:
    CaughtReplyRef into_;
};

} // namespace

Reply catchReply(ReplyShape shape, CaughtReplyRef into) {
    return {shape, std::make_unique<CatchingSink>(std::move(into))};
}

void FakeAgentProxy::updateSettingsViewModels(const ObjectRef& viewModels,
                                              std::function<void(std::optional<Error>)> reply) {
    received.push_back(viewModels);
    if (onUpdate) {
        onUpdate();
    }
    reply(answer);
}

void FakeConnection::requireUnresumed() const {
    fakeRequire(!resumed_, "a connection is configured before it is resumed");
}

void FakeConnection::setExportedInterface(XPCInterface interface) {
    requireUnresumed();
    exported_ = std::move(interface);
}

void FakeConnection::setRemoteObjectInterface(XPCInterface interface) {
    requireUnresumed();
    remote_ = std::move(interface);
}

void FakeConnection::setExportedObject(std::shared_ptr<ExportedObject> object) {
    requireUnresumed();
    object_ = std::move(object);
}

std::shared_ptr<AgentProxy> FakeConnection::remoteObjectProxy() {
    fakeRequire(remote_.has_value(), "a proxy needs the remote interface");
    return agent;
}

void FakeConnection::setInvalidationHandler(std::function<void()> handler) {
    requireUnresumed();
    invalidated_ = std::move(handler);
}

void FakeConnection::setRefusalHandler(std::function<void(const std::string&)> handler) {
    requireUnresumed();
    refused_ = std::move(handler);
}

void FakeConnection::resume() {
    fakeRequire(!resumed_, "a connection is resumed once");
    fakeRequire(exported_ && object_, "a connection that is resumed exports an object");
    resumed_ = true;
}

CaughtReplyRef FakeConnection::send(WallpaperOperation operation,
                                    std::vector<ObjectRef> arguments) {
    fakeRequire(resumed_ && object_, "messages are delivered while a connection is resumed");
    const WallpaperOperationInfo& known = info(operation);
    arguments.resize(static_cast<std::size_t>(known.argumentCount));
    auto caught = std::make_shared<CaughtReply>();
    for (int index = 0; index < known.argumentCount; ++index) {
        const ObjectRef& argument = arguments[static_cast<std::size_t>(index)];
        const auto allowed = exported_->classes(
            {.selector = known.selector, .argumentIndex = index, .ofReply = false});
        if (argument &&
            std::find(allowed.begin(), allowed.end(), &argument->objectClass()) == allowed.end()) {
            const std::string sentence = std::string(known.selector) + " carries the class " +
                                         argument->objectClass().name() +
                                         ", which is not allowed there";
            if (refused_) {
                refused_(sentence);
            }
            caught->count = 1;
            caught->error = Error{.domain = "FakeConnection", .code = 1, .message = sentence};
            return caught;
        }
    }
    object_->invoke(operation, std::move(arguments), catchReply(known.reply, caught));
    return caught;
}

void FakeConnection::invalidate() {
    fakeRequire(resumed_, "only a resumed connection is invalidated");
    if (const auto handler = std::exchange(invalidated_, nullptr)) {
        handler();
    }
    object_.reset();
}

} // namespace vantor
