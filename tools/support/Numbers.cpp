#include "tools/support/Numbers.h"

#include <iomanip>
#include <locale>
#include <sstream>

namespace Quorvan::Tools {

std::string Fixed(double number, int decimals) {
    std::ostringstream out;
    out.imbue(std::locale::classic());
    out << std::fixed << std::setprecision(decimals) << number;
    return out.str();
}

std::string Grouped(uint64_t number) {
    const std::string digits = std::to_string(number);
    std::string text;
    for (size_t i = 0; i < digits.size(); ++i) {
        if (i > 0 && (digits.size() - i) % 3 == 0)
            text += ',';
        text += digits[i];
    }
    return text;
}

}  // namespace Quorvan::Tools
