#include "host/state/JsonFault.h"

namespace Quorvan::Host {

namespace {

using Json = nlohmann::json;

/// Number that the parser gives faults of this kind.
constexpr int kNumberTooLarge = 406;

/// Hears all that the parser reads, and passes it over.
struct FaultFinder {
    JsonFault fault;

    bool null() { return true; }
    bool boolean(bool) { return true; }
    bool number_integer(Json::number_integer_t) { return true; }
    bool number_unsigned(Json::number_unsigned_t) { return true; }
    bool number_float(Json::number_float_t, const Json::string_t&) { return true; }
    bool string(Json::string_t&) { return true; }
    bool binary(Json::binary_t&) { return true; }
    bool start_object(size_t) { return true; }
    bool key(Json::string_t&) { return true; }
    bool end_object() { return true; }
    bool start_array(size_t) { return true; }
    bool end_array() { return true; }
    bool parse_error(size_t position, const std::string&, const Json::exception& error) {
        fault = {position, error.id == kNumberTooLarge};
        return false;
    }
};

}  // namespace

JsonFault JsonFault::In(std::string_view text) {
    FaultFinder finder;
    Json::sax_parse(text, &finder);
    return finder.fault;
}

}  // namespace Quorvan::Host
