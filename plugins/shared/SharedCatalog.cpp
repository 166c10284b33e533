#include "plugins/shared/SharedCatalog.h"

namespace Quorvan::Plugins {

const Host::ParameterCatalog& SharedCatalog() {
    static const Host::ParameterCatalog catalog;
    return catalog;
}

}  // namespace Quorvan::Plugins
