#include "web/engine/StoredSettings.h"

#include "host/parameters/SharedCatalog.h"
#include "host/parameters/ShellIndex.h"
#include "host/state/ParameterReader.h"

namespace Quorvan::Web {

const std::vector<uint32_t>& StoredSettings() {
    static const std::vector<uint32_t> stored = [] {
        std::vector<uint32_t> indices;
        for (const Host::ParameterInfo& info : Host::SharedCatalog().All())
            if (IsStored(info, Host::ParameterScope::Sound) || info.index == Host::kBypassIndex)
                indices.push_back(info.index);
        return indices;
    }();
    return stored;
}

}  // namespace Quorvan::Web
