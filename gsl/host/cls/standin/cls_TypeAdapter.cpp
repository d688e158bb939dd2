#include "cls_TypeAdapter.h"

cls_TypeAdapterBase::cls_TypeAdapterBase(const char* adapterName, int adapterNumber,
                                         unsigned int adapterArgument)
    : m_name(adapterName), m_number(adapterNumber), m_argument(adapterArgument) {}

cls_TypeAdapterBase::~cls_TypeAdapterBase() = default;
