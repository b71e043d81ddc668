#include "framework/base/CArray.h"

#include "framework/base/CObj.h"

namespace kelvo {

void ReportArrayGrowthFailure(std::int32_t elements) {
    CObj::ErrorBoxFormat("CArray<Tipo>::AllocSpace() fallito (richiesti %d elementi)", elements);
}

} // namespace kelvo
