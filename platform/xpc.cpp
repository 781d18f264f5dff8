#include "platform/xpc.h"

#include <cstdio>
#include <cstdlib>

namespace vantor {
namespace {

[[noreturn]] void stop(const char* message) {
    std::fprintf(stderr, "%s\n", message);
    std::abort();
}

} // namespace

Reply::Reply(ReplyShape shape, std::unique_ptr<ReplySink> sink)
    : shape_(shape), sink_(std::move(sink)) {}

Reply::~Reply() {
    if (sink_) {
        stop("a reply is dropped without being sent");
    }
}

std::unique_ptr<ReplySink> Reply::take(ReplyShape shape) {
    if (!sink_) {
        stop("a reply is sent twice");
    }
    if (shape != shape_) {
        stop("a reply has another shape than its operation");
    }
    return std::move(sink_);
}

void Reply::send(std::optional<Error> error) && { take(ReplyShape::error)->error(error); }

void Reply::sendObject(ObjectRef object) && {
    take(ReplyShape::objectAndError)->object(object, std::nullopt);
}

void Reply::sendObjectError(Error error) && {
    take(ReplyShape::objectAndError)->object(nullptr, std::move(error));
}

void Reply::sendNothing() && { take(ReplyShape::objectAndError)->object(nullptr, std::nullopt); }

void Reply::sendBoolean(bool value) && {
    take(ReplyShape::booleanAndError)->boolean(value, std::nullopt);
}

void XPCInterface::setClasses(ClassSet classes, const ArgumentSlot& slot) {
    for (auto& [known, set] : sets_) {
        if (known == slot) {
            set = std::move(classes);
            return;
        }
    }
    sets_.emplace_back(slot, std::move(classes));
}

std::span<const ObjectClass* const> XPCInterface::classes(const ArgumentSlot& slot) const {
    for (const auto& [known, set] : sets_) {
        if (known == slot) {
            return set;
        }
    }
    return {};
}

} // namespace vantor
