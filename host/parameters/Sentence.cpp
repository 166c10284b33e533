#include "host/parameters/Sentence.h"

namespace Quorvan::Host {

std::string Quoted(std::string_view text) {
    std::string quoted;
    quoted.reserve(text.size() + 2);
    quoted += '"';
    quoted += text;
    quoted += '"';
    return quoted;
}

}  // namespace Quorvan::Host
