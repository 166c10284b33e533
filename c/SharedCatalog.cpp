#include "c/SharedCatalog.h"

namespace Quorvan::C {

const Host::ParameterCatalog& SharedCatalog() {
    static const Host::ParameterCatalog catalog;
    return catalog;
}

}  // namespace Quorvan::C
