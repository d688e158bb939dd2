#ifndef XH_EXPORT_H
#define XH_EXPORT_H

/// Marks what this host exports. Everything else is hidden.
#define XH_API __attribute__((visibility("default")))

#endif
