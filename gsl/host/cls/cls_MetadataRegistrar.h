#ifndef CLS_METADATA_REGISTRAR_H
#define CLS_METADATA_REGISTRAR_H

#include "cls_ClassRegistrar.h"
#include "mem_Export.h"
#include "omi_Singleton.h"

/// Collects what every module declares of its persistent classes. The process has one registrar;
/// omi_Singleton returns it.
class GSL_HOST_API cls_MetadataRegistrar {
public:
  /// How a class registers itself.
  using InitializeMetadata = void (*)(cls_ClassRegistrar&);

  /// Lets a class register itself. The class keeps `flags`.
  void initClassMetadata(InitializeMetadata function, int flags);

  /// Returns the registrar, to register classes.
  cls_ClassRegistrar& ClassRegistrar() { return m_registrar; }
  const cls_ClassRegistrar& ClassRegistrar() const { return m_registrar; }

private:
  cls_ClassRegistrar m_registrar;
};

extern template class GSL_HOST_API omi_Singleton<cls_MetadataRegistrar>;

#endif
