#ifndef CLS_METADATA_REGISTRAR_H
#define CLS_METADATA_REGISTRAR_H

#include "cls_ClassRegistrar.h"
#include "omi_Singleton.h"

class XH_API cls_MetadataRegistrar {
public:
  using InitializeMetadata = void (*)(cls_ClassRegistrar& registrar);

  void initClassMetadata(InitializeMetadata function, int flags);
  cls_ClassRegistrar& ClassRegistrar() { return m_registrar; }

private:
  cls_ClassRegistrar m_registrar;
};

#endif
