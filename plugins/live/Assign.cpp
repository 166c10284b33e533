#include "plugins/live/Assign.h"

#include <charconv>
#include <stdexcept>
#include <string_view>

#include "host/parameters/Sentence.h"
#include "plugins/live/ParameterNamed.h"

namespace Quorvan::Live {

void Assign(Host::Instrument& instrument, const std::vector<std::string>& wishes) {
    for (const std::string& wish : wishes) {
        const size_t sign = wish.find('=');
        uint32_t number = 0;
        const auto read = std::from_chars(wish.data(), wish.data() + wish.size(), number);
        if (sign == std::string::npos || read.ptr != wish.data() + sign || number < 1 ||
            number > Host::kAssignments)
            throw std::invalid_argument(Host::Quoted(wish) +
                                        " is no assignment. Write 1=NAME, to " +
                                        std::to_string(Host::kAssignments) + "=NAME.");
        const std::string_view name = std::string_view(wish).substr(sign + 1);
        instrument.Assign(number - 1, ParameterNamed(instrument, name));
    }
}

}  // namespace Quorvan::Live
