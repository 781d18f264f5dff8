#include "agent/extension_session.h"

#include "agent/complaint.h"
#include "agent/host_application.h"
#include "agent/kit/kit_classes.h"

#include "platform/bundle.h"
#include "platform/platform.h"

namespace vantor::agent {

namespace {

constexpr const char* kExtensionHome = "Library/Containers/com.nimbara.app.lockscreen/Data";

/// What replies and the extension's own calls are made of.
constexpr std::string_view kContextClass = "WallpaperRemoteContextXPC";
constexpr std::string_view kViewModelsClass = "WallpaperSettingsViewModelsXPC";

std::optional<Error> receivePicker(const std::function<void(Picker)>& changed,
                                   const std::vector<ObjectRef>& arguments) {
    auto picker = !arguments.empty() && arguments[0] ? readPicker(*arguments[0]) : std::nullopt;
    if (!picker) {
        return Error{
            .domain = "vantor-agent", .code = 1, .message = "the argument is no view models"};
    }
    if (changed) {
        changed(*std::move(picker));
    }
    return std::nullopt;
}

} // namespace

launch::LaunchRequest extensionLaunch(Platform& platform, std::filesystem::path bundle) {
    const Bundle& own = platform.bundle();
    const auto userHome = own.userDatabaseHome().value_or(own.homeDirectory());
    return {.bundle = std::move(bundle), .home = userHome / kExtensionHome};
}

Result<std::unique_ptr<ExtensionSession>, std::string>
ExtensionSession::start(MainLoop& loop, const launch::LaunchRequest& request,
                        std::span<const launch::ScreenRecord> screens, SessionHandlers handlers,
                        double patience) {
    std::unique_ptr<ExtensionSession> session(new ExtensionSession(loop, patience));
    registerKitClasses(session->runtime_);
    auto host = launch::LaunchHost::start(
        loop, request,
        {.attached = std::move(handlers.attached),
         .open =
             [open = std::move(handlers.openHostApplication)](const std::string& identifier) {
                 // No other application is an extension's to open.
                 if (open && identifier == kHostApplication) {
                     open();
                 }
             },
         .links = std::move(handlers.links),
         .ended =
             [self = session.get(), ended = std::move(handlers.ended)](const std::string& how) {
                 ended(self->hasGivenUp_
                           ? "answered nothing for " + inSeconds(self->patience_) + " and was ended"
                           : how);
             }});
    if (!host) {
        return Failure{host.error()};
    }
    session->host_ = std::move(*host);
    FileDescriptor socket = session->host_->connect();
    if (!session->host_->setScreens(screens) || !socket) {
        return Failure{std::string("the extension takes no connection")};
    }
    session->client_ = xpc::XPCClient::create(
        loop, std::move(socket), session->runtime_,
        {session->runtime_.classNamed(kContextClass),
         session->runtime_.classNamed(kViewModelsClass)},
        {.called = [changed = std::move(handlers.pickerChanged)](
                       AgentOperation operation,
                       const std::vector<ObjectRef>& arguments) -> std::optional<Error> {
             return operation == AgentOperation::updateSettingsViewModels
                        ? receivePicker(changed, arguments)
                        : std::nullopt;
         },
         // The end of its process, which follows, says more.
         .disconnected = [] {}});
    if (!session->client_) {
        return Failure{std::string("no connection to the extension can be made")};
    }
    return session;
}

ExtensionSession::ExtensionSession(MainLoop& loop, double patience)
    : patience_(patience), answers_(loop, patience, [this] { giveUp(); }) {}

void ExtensionSession::giveUp() {
    hasGivenUp_ = true;
    host_->kill();
}

void ExtensionSession::ask(WallpaperOperation operation, const std::vector<ObjectRef>& arguments,
                           std::function<void(const xpc::CallResult&)> done) {
    answers_.asked();
    client_->call(operation, arguments,
                  [this, done = std::move(done)](const xpc::CallResult& result) {
                      answers_.answered();
                      done(result);
                  });
}

void ExtensionSession::acquire(const UUID& identifier, const CreationRequest& request,
                               std::function<void(Result<std::uint32_t, std::string>)> done) {
    ObjectRef creation = makeCreationRequest(request);
    if (!creation) {
        done(Failure{"there is no mode \"" + request.presentationMode + "/" +
                     request.activityState + "\""});
        return;
    }
    ask(WallpaperOperation::acquire, {makeWallpaperID(identifier), std::move(creation)},
        [done = std::move(done)](const xpc::CallResult& result) {
            if (result.error) {
                done(Failure{result.error->message});
                return;
            }
            const auto contextID = result.object ? remoteContextID(*result.object) : std::nullopt;
            if (!contextID) {
                done(Failure{std::string("the reply holds no remote context")});
                return;
            }
            done(*contextID);
        });
}

void ExtensionSession::update(const UUID& identifier, const UpdateRequest& request,
                              std::function<void(std::optional<Error>)> done) {
    ask(WallpaperOperation::update, {makeWallpaperID(identifier), makeUpdateRequest(request)},
        [done = std::move(done)](const xpc::CallResult& result) { done(result.error); });
}

void ExtensionSession::invalidate(const UUID& identifier,
                                  std::function<void(std::optional<Error>)> done) {
    ask(WallpaperOperation::invalidate, {makeWallpaperID(identifier)},
        [done = std::move(done)](const xpc::CallResult& result) { done(result.error); });
}

void ExtensionSession::picker(std::function<void(Result<Picker, std::string>)> done) {
    client_->call(WallpaperOperation::provideSettingsViewModels, {makeContentTypeSet()},
                  [done = std::move(done)](const xpc::CallResult& result) {
                      if (result.error) {
                          done(Failure{result.error->message});
                          return;
                      }
                      auto picker = result.object ? readPicker(*result.object) : std::nullopt;
                      if (!picker) {
                          done(Failure{std::string("the reply holds no view models")});
                          return;
                      }
                      done(*std::move(picker));
                  });
}

void ExtensionSession::tick(std::uint32_t displayID) {
    // An extension that does not keep up, or is gone, misses a tick and nothing else.
    static_cast<void>(host_->tick(displayID));
}

} // namespace vantor::agent
