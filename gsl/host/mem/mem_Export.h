#ifndef MEM_EXPORT_H
#define MEM_EXPORT_H

/// GSL_HOST_API marks what the host libraries export; everything else is hidden.
#if defined(__GNUC__)
#define GSL_HOST_API __attribute__((visibility("default")))
#else
#define GSL_HOST_API
#endif

#endif
