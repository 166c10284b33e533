#include "tools/support/CsvLine.h"

#include "host/parameters/NumberText.h"

namespace Quorvan::Tools {

namespace {

constexpr std::string_view kByteOrderMark = "\xef\xbb\xbf";

char SeparatorOf(std::string_view line) {
    bool quoted = false;
    for (const char c : line) {
        if (c == '"')
            quoted = !quoted;
        else if (!quoted && (c == ';' || c == '\t'))
            return c;
    }
    return ',';
}

/// Takes the quotes off a field that has them.
std::string Unquoted(std::string_view field) {
    field = Host::Trim(field);
    if (field.size() < 2 || field.front() != '"' || field.back() != '"')
        return std::string(field);
    std::string text;
    for (size_t i = 1; i + 1 < field.size(); ++i) {
        text += field[i];
        if (field[i] == '"' && field[i + 1] == '"')
            ++i;
    }
    return text;
}

}  // namespace

std::vector<std::string> SplitCsvLine(std::string_view line) {
    if (line.starts_with(kByteOrderMark))
        line.remove_prefix(kByteOrderMark.size());
    line = Host::Trim(line);
    std::vector<std::string> fields;
    if (line.empty() || line.front() == '#')
        return fields;
    const char separator = SeparatorOf(line);
    bool quoted = false;
    size_t from = 0;
    for (size_t i = 0; i <= line.size(); ++i) {
        if (i < line.size() && line[i] == '"')
            quoted = !quoted;
        if (i == line.size() || (line[i] == separator && !quoted)) {
            fields.push_back(Unquoted(line.substr(from, i - from)));
            from = i + 1;
        }
    }
    return fields;
}

}  // namespace Quorvan::Tools
