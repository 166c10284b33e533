#include "c/ParameterName.h"

#include "c/Guard.h"
#include "c/SharedCatalog.h"

namespace Quorvan::C {

tesserae_result FindNamed(const tesserae_processor* processor, const char* name, uint32_t& index) {
    const Host::ParameterCatalog& catalog = SharedCatalog();
    const auto found = catalog.Find(name);
    if (!found)
        return Fail(processor, TESSERAE_UNKNOWN_NAME, catalog.UnknownName(name));
    index = *found;
    return TESSERAE_OK;
}

}  // namespace Quorvan::C
