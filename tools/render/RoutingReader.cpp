#include "tools/render/RoutingReader.h"

#include "host/parameters/Sentence.h"

namespace Quorvan::Tools {

std::string RoutingAdvice(const Host::ParameterCatalog& catalog, uint32_t source) {
    constexpr uint32_t kExampleRow = 0;
    const std::string& cell = catalog[Host::AmountIndex(source, kExampleRow)].title;
    return "Try --set " + Host::Quoted(cell + "=50 %") + " --set " + Host::Quoted(cell + " On=On") +
           ".";
}

}  // namespace Quorvan::Tools
