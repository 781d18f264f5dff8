#pragma once
// What the project uses of Code Signing Services. Each group names the documentation page that its
// facts are from.

#include <CoreFoundation/CoreFoundation.h>

#ifdef __cplusplus
extern "C" {
#endif

// Pages: "SecCSFlags", "kSecCSDefaultFlags", "errSecSuccess", "kSecGuestAttributePid"
typedef uint32_t SecCSFlags;
enum : SecCSFlags { kSecCSDefaultFlags = 0 };
enum : OSStatus { errSecSuccess = 0 };
extern const CFStringRef kSecGuestAttributePid;

// Pages: "SecCodeCopyGuestWithAttributes", "SecRequirementCreateWithString", "SecCodeCheckValidity"
typedef struct __SecCode* SecCodeRef;
typedef struct __SecRequirement* SecRequirementRef;
OSStatus SecCodeCopyGuestWithAttributes(SecCodeRef host, CFDictionaryRef attributes,
                                        SecCSFlags flags, SecCodeRef* guest);
OSStatus SecRequirementCreateWithString(CFStringRef text, SecCSFlags flags,
                                        SecRequirementRef* requirement);
OSStatus SecCodeCheckValidity(SecCodeRef code, SecCSFlags flags, SecRequirementRef requirement);

#ifdef __cplusplus
}
#endif
