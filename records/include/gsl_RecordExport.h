#ifndef GSL_RECORD_EXPORT_H
#define GSL_RECORD_EXPORT_H

/// GSL_RECORDS_API marks what the library of records exports; everything else is hidden.
/// GSL_RECORDS_HIDDEN hides a class inside a class that is exported.
#if defined(__GNUC__)
#define GSL_RECORDS_API __attribute__((visibility("default")))
#define GSL_RECORDS_HIDDEN __attribute__((visibility("hidden")))
#else
#define GSL_RECORDS_API
#define GSL_RECORDS_HIDDEN
#endif

#endif
