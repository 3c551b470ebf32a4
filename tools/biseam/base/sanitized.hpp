// BISEAM_SANITIZED: built with a sanitizer that takes requests for memory and threads itself.
#pragma once

#if defined(__has_feature)
#if __has_feature(address_sanitizer) || __has_feature(thread_sanitizer)
#define BISEAM_SANITIZED
#endif
#elif defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
#define BISEAM_SANITIZED
#endif
