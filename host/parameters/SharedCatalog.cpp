#include "host/parameters/SharedCatalog.h"

namespace Quorvan::Host {

const ParameterCatalog& SharedCatalog() {
    static const ParameterCatalog catalog;
    return catalog;
}

}  // namespace Quorvan::Host
