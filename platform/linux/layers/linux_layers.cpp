#include "platform/linux/layers/linux_layers.h"

#include "platform/linux/layers/remote_context_class.h"

#include <algorithm>
#include <random>
#include <sys/epoll.h>
#include <sys/socket.h>

namespace vantor {

LinuxLayers::LinuxLayers(MainLoop& loop)
    : loop_(loop), signalWatch_(loop.watch(signal_->descriptor(), EPOLLIN,
                                           [this](std::uint32_t) { framesFinished(); })),
      contextClass_(std::make_unique<RemoteContextClass>(*this)) {
    loop.setTurnEnded([this] { flush(); });
}

LinuxLayers::~LinuxLayers() { loop_.setTurnEnded(nullptr); }

LayerRef LinuxLayers::makeLayer() { return std::make_shared<LinuxLayer>(changes_); }

std::shared_ptr<MetalLayer> LinuxLayers::makeMetalLayer() {
    return std::make_shared<LinuxMetalLayer>(changes_, signal_);
}

void LinuxLayers::flush() {
    if (depth_ != 0 || !changes_->pending) {
        return;
    }
    changes_->pending = false;
    for (auto& [contextID, context] : contexts_) {
        update(context);
    }
}

void LinuxLayers::update(Context& context) {
    std::erase_if(context.hostings, [&context](const std::unique_ptr<Hosting>& hosting) {
        return !hosting->link->update(context.root.get());
    });
}

void LinuxLayers::framesFinished() {
    signal_->clear();
    // A frame, or its copy for a host.
    changes_->pending = true;
    for (auto& [contextID, context] : contexts_) {
        if (context.root) {
            takeFinished(*context.root);
        }
    }
    flush();
}

void LinuxLayers::takeFinished(LinuxLayer& layer) {
    if (LinuxMetalLayer* metal = layer.metal()) {
        metal->takeFinished();
    }
    for (const auto& sublayer : layer.sublayers()) {
        takeFinished(*sublayer);
    }
}

std::optional<FileDescriptor> LinuxLayers::attach(std::uint32_t contextID) {
    const auto found = contexts_.find(contextID);
    int ends[2];
    if (found == contexts_.end() ||
        socketpair(AF_UNIX, SOCK_SEQPACKET | SOCK_CLOEXEC, 0, ends) != 0) {
        return std::nullopt;
    }
    FileDescriptor theirs(ends[1]);
    auto hosting = std::make_unique<Hosting>();
    Hosting* const key = hosting.get();
    hosting->link = std::make_unique<LayerHostLink>(FileDescriptor(ends[0]));
    hosting->watch =
        loop_.watch(hosting->link->descriptor(), EPOLLIN,
                    [this, contextID, key](std::uint32_t) { hostSpoke(contextID, key); });
    // A drawable that comes back with a tick is there for it.
    hosting->watch->setUrgency(Urgency::mostUrgent);
    found->second.hostings.push_back(std::move(hosting));
    update(found->second);
    return theirs;
}

void LinuxLayers::hostSpoke(std::uint32_t contextID, const Hosting* hosting) {
    const auto found = contexts_.find(contextID);
    if (found == contexts_.end()) {
        return;
    }
    LinuxLayer* const root = found->second.root.get();
    std::erase_if(found->second.hostings, [&](const std::unique_ptr<Hosting>& entry) {
        if (entry.get() != hosting) {
            return false;
        }
        const bool knewDevice = entry->link->knowsDevice();
        // What waited for the host's device goes now.
        return !entry->link->receive() ||
               (!knewDevice && entry->link->knowsDevice() && !entry->link->update(root));
    });
}

std::uint32_t LinuxLayers::addContext() {
    std::random_device source;
    std::uint32_t contextID = 0;
    while (contextID == 0 || contexts_.contains(contextID)) {
        contextID = source();
    }
    contexts_.emplace(contextID, Context{});
    return contextID;
}

void LinuxLayers::setRoot(std::uint32_t contextID, std::shared_ptr<LinuxLayer> root) {
    if (const auto found = contexts_.find(contextID); found != contexts_.end()) {
        found->second.root = std::move(root);
        changes_->pending = true;
    }
}

void LinuxLayers::removeContext(std::uint32_t contextID) { contexts_.erase(contextID); }

} // namespace vantor
