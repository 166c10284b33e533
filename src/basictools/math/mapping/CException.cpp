#include "basictools/math/mapping/CException.h"

namespace Quorvan::MappingTools {

CException::CException(const std::string& message, const std::string& file, int line)
    : text(message + "(" + file + ":" + std::to_string(line) + ")") {}

}  // namespace Quorvan::MappingTools
