#ifndef BISEAM_EXPORT_H
#define BISEAM_EXPORT_H

#if defined(__GNUC__)
#define BISEAM_API __attribute__((visibility("default")))
#else
#define BISEAM_API
#endif

#endif
