#pragma once
// What the project uses of unified logging. Each group names the documentation page that its facts
// are from.

#include <os/object.h>
#include <stdbool.h>
#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif

// Pages: "os_log_create", "os_log_type_t", "os_log_type_enabled"
OS_OBJECT_DECL(os_log);
typedef uint8_t os_log_type_t;
enum : os_log_type_t { OS_LOG_TYPE_DEFAULT = 0x00 };
os_log_t os_log_create(const char* subsystem, const char* category);
bool os_log_type_enabled(os_log_t log, os_log_type_t type);

// Page: "os_log_with_type". A macro of the system; an empty function serves to check its use.
__attribute__((format(os_log, 3, 4))) static inline void
os_log_with_type(os_log_t log, os_log_type_t type, const char* format, ...) {
    (void)log, (void)type, (void)format;
}

#ifdef __cplusplus
}
#endif
