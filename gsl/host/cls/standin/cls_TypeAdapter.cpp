#include "cls_TypeAdapter.h"

cls_TypeAdapterBase::cls_TypeAdapterBase(const char* adapterName, int adapterNumber,
                                         unsigned int adapterArgument)
    : name(adapterName), number(adapterNumber), argument(adapterArgument) {}

cls_TypeAdapterBase::~cls_TypeAdapterBase() = default;
