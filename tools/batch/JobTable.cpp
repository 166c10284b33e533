#include "tools/batch/JobTable.h"

#include <utility>

#include <nlohmann/json.hpp>

#include "host/parameters/NumberText.h"
#include "host/parameters/Sentence.h"
#include "tools/support/CsvLine.h"
#include "tools/support/Failure.h"

namespace Quorvan::Tools {

namespace {

using Json = nlohmann::ordered_json;

std::string TextOf(const Json& value, const std::string& word) {
    if (value.is_string())
        return value.get<std::string>();
    if (value.is_number() || value.is_boolean())
        return value.dump();
    throw Failure(ExitCode::Input, Host::Quoted(word) + " holds no text, number, true or false.");
}

/// A list stands for the word several times; an object, as of "set", for NAME=VALUE several times.
void Add(JobWords& words, const std::string& word, const Json& value) {
    if (value.is_null())
        return;
    if (value.is_array())
        for (const Json& one : value)
            words.emplace_back(word, TextOf(one, word));
    else if (value.is_object())
        for (const auto& [name, one] : value.items())
            words.emplace_back(word, name + "=" + TextOf(one, word));
    else
        words.emplace_back(word, TextOf(value, word));
}

}  // namespace

bool JobTable::IsJob(std::string_view line) {
    const std::string_view text = Host::Trim(line);
    if (text.empty() || text.front() == '#')
        return false;
    if (form == Form::Unknown)
        form = text.front() == '{' ? Form::Json : Form::Csv;
    if (form == Form::Json || !heads.empty())
        return true;
    heads = SplitCsvLine(line);
    return false;
}

JobWords JobTable::Read(std::string_view line) const {
    return form == Form::Json ? ReadJson(line) : ReadCsv(SplitCsvLine(line));
}

JobWords JobTable::ReadJson(std::string_view line) {
    const Json json = Json::parse(line, nullptr, false);
    if (!json.is_object())
        throw Failure(ExitCode::Input,
                      "The line is no JSON object. Write one such as {\"input\": \"in.wav\", "
                      "\"output\": \"out.wav\"}.");
    JobWords words;
    for (const auto& [word, value] : json.items())
        Add(words, word, value);
    return words;
}

JobWords JobTable::ReadCsv(std::vector<std::string> fields) const {
    if (fields.size() > heads.size())
        throw Failure(ExitCode::Input, "The line has " + std::to_string(fields.size()) +
                                           " fields, more than the " +
                                           std::to_string(heads.size()) +
                                           " of the first line. Put quotes around commas.");
    JobWords words;
    for (size_t i = 0; i < fields.size(); ++i)
        if (!fields[i].empty())
            words.emplace_back(heads[i], std::move(fields[i]));
    return words;
}

}  // namespace Quorvan::Tools
