#ifndef GSL_RECORD_EXPORT_H
#define GSL_RECORD_EXPORT_H

/// GSL_RECORDS_API marks what the library of records exports; everything else is hidden.
#if defined(__GNUC__)
#define GSL_RECORDS_API __attribute__((visibility("default")))
#else
#define GSL_RECORDS_API
#endif

#endif
