#include "tools/manual/CommandLine.h"

namespace Quorvan::Tools {

std::vector<std::string> SplitTyped(std::string_view line) {
    std::vector<std::string> words(1);
    char quote = '\0';
    bool inWord = false;
    for (size_t i = 0; i < line.size(); ++i) {
        const char letter = line[i];
        if (quote == '\0' && letter == ' ') {
            if (inWord)
                words.emplace_back();
            inWord = false;
            continue;
        }
        inWord = true;
        if (letter == quote)
            quote = '\0';
        else if (quote == '\0' && (letter == '"' || letter == '\''))
            quote = letter;
        else if (letter == '\\' && quote != '\'' && i + 1 < line.size())
            words.back() += line[++i];
        else
            words.back() += letter;
    }
    return words;
}

}  // namespace Quorvan::Tools
