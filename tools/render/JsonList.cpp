#include "tools/render/JsonList.h"

#include <algorithm>
#include <iterator>
#include <utility>

#include "tools/support/Failure.h"

namespace Quorvan::Tools {

namespace {

using Json = nlohmann::json;

/// Reads on for the parser and tells, to whoever holds the same counter, how far it is.
class CountingIterator {
public:
    using iterator_category = std::input_iterator_tag;
    using value_type = char;
    using difference_type = std::ptrdiff_t;
    using pointer = const char*;
    using reference = const char&;

    CountingIterator(const char* place, const char** furthest) : at(place), seen(furthest) {}
    reference operator*() const { return *at; }
    CountingIterator& operator++() {
        *seen = ++at;
        return *this;
    }
    CountingIterator operator++(int) {
        const CountingIterator before = *this;
        ++*this;
        return before;
    }
    bool operator==(const CountingIterator& other) const { return at == other.at; }
    bool operator!=(const CountingIterator& other) const { return at != other.at; }

private:
    const char* at;
    const char** seen;
};

/// Line and column of places that are asked for from the front to the back.
class Places {
public:
    explicit Places(std::string_view whole) : text(whole) {}

    std::string At(size_t offset) {
        for (const size_t end = std::min(offset, text.size()); at < end; ++at)
            if (text[at] == '\n') {
                ++line;
                lineStart = at + 1;
            }
        return "line " + std::to_string(line) + ", column " + std::to_string(at - lineStart + 1);
    }

private:
    std::string_view text;
    size_t at = 0, line = 1, lineStart = 0;
};

[[noreturn]] void Refuse(const std::string& sentence) { throw Failure(ExitCode::Input, sentence); }

}  // namespace

JsonList::JsonList(const std::string& what, std::string_view text) {
    const char* furthest = text.data();
    std::vector<std::string> places;
    Places place(text);
    const auto note = [&](int depth, Json::parse_event_t event, Json&) {
        using Event = Json::parse_event_t;
        // The first sign of an entry has just been read. Bare values are known at their end only.
        if (depth == 1 &&
            (event == Event::object_start || event == Event::array_start || event == Event::value))
            places.push_back(place.At(static_cast<size_t>(furthest - text.data()) - 1));
        return true;
    };
    Json json;
    try {
        json =
            Json::parse(CountingIterator(text.data(), &furthest),
                        CountingIterator(text.data() + text.size(), &furthest), note, true, true);
    } catch (const Json::parse_error& error) {
        Refuse(what + ", " + place.At(std::max<size_t>(error.byte, 1) - 1) +
               ": this is no valid JSON. Check quotes, commas and brackets here and just before.");
    }
    if (!json.is_array())
        Refuse(what + " has to be a list in [ ].");
    for (size_t i = 0; i < json.size(); ++i)
        entries.push_back({std::move(json[i]), places.at(i)});
}

}  // namespace Quorvan::Tools
