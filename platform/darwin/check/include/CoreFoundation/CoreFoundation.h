#pragma once
// What the project uses of Core Foundation, declared for compiling where there is no macOS. Each
// group names the documentation page that its facts are from.

#include <MacTypes.h>
#include <stdbool.h>
#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif

// Pages: "CFTypeRef", "CFString", "CFData", "CFDictionary", "CFURL"
typedef const void* CFTypeRef;
typedef const struct __attribute__((objc_bridge(NSString))) __CFString* CFStringRef;
typedef const struct __attribute__((objc_bridge(NSData))) __CFData* CFDataRef;
typedef const struct __attribute__((objc_bridge(NSDictionary))) __CFDictionary* CFDictionaryRef;
typedef const struct __attribute__((objc_bridge(NSURL))) __CFURL* CFURLRef;

// Pages: "CFRetain", "CFRelease"
CFTypeRef CFRetain(CFTypeRef cf);
void CFRelease(CFTypeRef cf);

// Pages: "CFNotificationCenterAddObserver", "CFNotificationCenterGetDarwinNotifyCenter",
// "CFNotificationCenterPostNotification", "CFNotificationSuspensionBehavior"
typedef struct __CFNotificationCenter* CFNotificationCenterRef;
typedef long CFIndex;
typedef CFIndex CFNotificationSuspensionBehavior;
enum : CFNotificationSuspensionBehavior {
    CFNotificationSuspensionBehaviorDeliverImmediately = 4,
};
typedef void (*CFNotificationCallback)(CFNotificationCenterRef center, void* observer,
                                       CFStringRef name, const void* object,
                                       CFDictionaryRef userInfo);
CFNotificationCenterRef CFNotificationCenterGetDarwinNotifyCenter(void);
void CFNotificationCenterAddObserver(CFNotificationCenterRef center, const void* observer,
                                     CFNotificationCallback callBack, CFStringRef name,
                                     const void* object,
                                     CFNotificationSuspensionBehavior suspensionBehavior);
void CFNotificationCenterPostNotification(CFNotificationCenterRef center, CFStringRef name,
                                          const void* object, CFDictionaryRef userInfo,
                                          Boolean deliverImmediately);

// Page: "CFRunLoopRunInMode(_:_:_:)"; for tests.
typedef CFStringRef CFRunLoopMode;
extern const CFRunLoopMode kCFRunLoopDefaultMode;
int32_t CFRunLoopRunInMode(CFRunLoopMode mode, double seconds, Boolean returnAfterSourceHandled);

#ifdef __cplusplus
}
#endif
