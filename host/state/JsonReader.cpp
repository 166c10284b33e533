#include "host/state/JsonReader.h"

#include <algorithm>
#include <utility>

#include "host/parameters/NameDistance.h"
#include "host/parameters/Sentence.h"
#include "host/state/JsonDepth.h"
#include "host/state/JsonFault.h"

namespace Quorvan::Host {

namespace {

/// So many members that nobody reads get a sentence of their own.
constexpr size_t kNamedStrangers = 5;

using Json = nlohmann::json;

/// "line 3, column 14" of the byte at an offset that counts from 1.
std::string PlaceOf(std::string_view text, size_t byte) {
    const std::string_view before = text.substr(0, std::min(byte == 0 ? 0 : byte - 1, text.size()));
    const auto line = 1 + std::count(before.begin(), before.end(), '\n');
    const size_t lineStart =
        before.rfind('\n') == std::string_view::npos ? 0 : before.rfind('\n') + 1;
    return "line " + std::to_string(line) + ", column " +
           std::to_string(before.size() - lineStart + 1);
}

const char* TypeName(Json::value_t type) {
    switch (type) {
        case Json::value_t::object:
            return "an object in braces";
        case Json::value_t::array:
            return "a list in brackets";
        case Json::value_t::string:
            return "a text in quotes";
        default:
            return "a number";
    }
}

}  // namespace

JsonReader::JsonReader(std::string word, std::string formatName, int versionRead)
    : what(std::move(word)), format(std::move(formatName)), version(versionRead) {}

bool JsonReader::Open(std::string_view text) {
    if (IsNestedTooDeep(text))
        return Fail("The " + what + " is nested deeper than " + std::to_string(kDeepestNesting) +
                    " levels of brackets, which no program of ours writes. Choose another file.");
    root = Json::parse(text, nullptr, false);
    return root.is_discarded() ? FailFor(JsonFault::In(text), text)
                               : CheckFormat() && CheckVersion();
}

bool JsonReader::FailFor(const JsonFault& fault, std::string_view text) {
    if (fault.isTooLarge)
        return Fail("The " + what + " holds a number that is too large; positions go from 0 to 1.");
    return Fail("The " + what + " is no JSON text. Look for a missing quote, comma or brace near " +
                PlaceOf(text, fault.byte) + ".");
}

bool JsonReader::CheckFormat() {
    if (!root.is_object() || !root.contains("format"))
        return Fail("This is no " + what + ": it does not say \"format\": " + Quoted(format) +
                    ". Choose another file.");
    const std::string found = TextIn(root, "format");
    if (found != format)
        return Fail("This is no " + what + ": its \"format\" is " + Quoted(found) +
                    " and would have to be " + Quoted(format) + ". Choose another file.");
    return true;
}

bool JsonReader::CheckVersion() {
    const auto found = root.find("version");
    if (found == root.end() || !found->is_number_integer())
        return Fail("The " + what +
                    " does not say its version; add \"version\": " + std::to_string(version) + ".");
    if (*found != version)
        return Fail("The " + what + " is of version " + found->dump() +
                    ", and this program reads version " + std::to_string(version) +
                    ". Open it with a program of its own version.");
    return true;
}

const Json* JsonReader::Member(const char* name, Json::value_t type) {
    const auto found = root.find(name);
    if (found == root.end())
        return nullptr;
    if (found->type() == type)
        return &*found;
    Warn(Quoted(name) + " is left out: it has to be " + TypeName(type) + ".");
    return nullptr;
}

std::string JsonReader::OptionalText(const char* name) {
    const Json* const text = Member(name, Json::value_t::string);
    return text != nullptr ? text->get<std::string>() : std::string();
}

std::string JsonReader::TextIn(const Json& object, const char* name) {
    if (!object.is_object())
        return {};
    const auto found = object.find(name);
    return found != object.end() && found->is_string() ? found->get<std::string>() : std::string();
}

std::optional<double> JsonReader::NumberIn(const Json& object, const char* name) {
    if (!object.is_object())
        return std::nullopt;
    const auto found = object.find(name);
    return found != object.end() && found->is_number() ? std::optional(found->get<double>())
                                                       : std::nullopt;
}

void JsonReader::TellStrangers(const Json& object, const std::vector<std::string>& known,
                               const std::string& where) {
    if (!object.is_object())
        return;
    for (auto member = object.begin(); member != object.end(); ++member) {
        if (std::find(known.begin(), known.end(), member.key()) != known.end() ||
            strangers++ >= kNamedStrangers)
            continue;
        const std::string suggestion = DidYouMean(NearestNames(member.key(), known, 1));
        Warn(where + Quoted(member.key()) + " is no key of a " + what + " and is left out." +
             (suggestion.empty() ? "" : " " + suggestion));
    }
}

void JsonReader::TellFurtherStrangers() {
    if (strangers > kNamedStrangers)
        Warn(std::to_string(strangers - kNamedStrangers) + " more keys are none of a " + what +
             ". They are left out.");
}

void JsonReader::Warn(std::string sentence) {
    issues.push_back({Issue::Severity::Warning, std::move(sentence)});
}

bool JsonReader::Fail(std::string sentence) {
    issues.push_back({Issue::Severity::Error, std::move(sentence)});
    return false;
}

}  // namespace Quorvan::Host
