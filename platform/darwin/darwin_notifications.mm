#include "platform/darwin/darwin_system.h"

#include "platform/darwin/foundation.h"

#include <map>
#include <vector>

namespace vantor::darwin {
namespace {

/// Main thread. The centre tells its callback no more than the name.
std::map<std::string, std::vector<std::function<void()>>>& darwinObservers() {
    static auto& observers = *new std::map<std::string, std::vector<std::function<void()>>>;
    return observers;
}

void darwinNotificationArrived(CFNotificationCenterRef, void*, CFStringRef name, const void*,
                               CFDictionaryRef) {
    for (const auto& observer : darwinObservers()[stdString((__bridge NSString*)name)]) {
        observer();
    }
}

} // namespace

void DarwinNotifications::observeDistributed(std::string_view name,
                                             std::function<void()> observer) {
    [NSDistributedNotificationCenter.defaultCenter addObserverForName:nsString(name)
                                                               object:nil
                                                                queue:NSOperationQueue.mainQueue
                                                           usingBlock:^(NSNotification*) {
                                                             observer();
                                                           }];
}

void DarwinNotifications::observeDarwin(std::string_view name, std::function<void()> observer) {
    auto& observers = darwinObservers()[std::string(name)];
    observers.push_back(std::move(observer));
    if (observers.size() > 1) {
        return;
    }
    CFNotificationCenterAddObserver(CFNotificationCenterGetDarwinNotifyCenter(), nullptr,
                                    darwinNotificationArrived, (__bridge CFStringRef)nsString(name),
                                    nullptr, CFNotificationSuspensionBehaviorDeliverImmediately);
}

bool DarwinNotifications::postDarwin(std::string_view name) {
    CFNotificationCenterPostNotification(CFNotificationCenterGetDarwinNotifyCenter(),
                                         (__bridge CFStringRef)nsString(name), nullptr, nullptr,
                                         true);
    return true;
}

} // namespace vantor::darwin
