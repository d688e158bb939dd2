#include "omu_Primitive.h"

omu_Primitive::~omu_Primitive() = default;
