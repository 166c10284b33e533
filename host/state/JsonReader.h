#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include <nlohmann/json.hpp>

#include "host/state/Issue.h"

namespace Quorvan::Host {

struct JsonFault;

/// Reads one JSON object of a known format, and collects what is wrong with it.
class JsonReader {
public:
    /// what is the word that sentences use: "preset".
    JsonReader(std::string what, std::string formatName, int versionRead);

    /// Parses and checks format and version; false, with an error, where the text is something
    /// else.
    bool Open(std::string_view text);
    const nlohmann::json& Root() const { return root; }

    bool Has(const char* member) const { return root.contains(member); }
    /// A member of a type; null where it is missing and, with a warning, where it is of another
    /// type.
    const nlohmann::json* Member(const char* name, nlohmann::json::value_t type);
    /// The text of a member; empty likewise.
    std::string OptionalText(const char* name);
    static std::string TextIn(const nlohmann::json& object, const char* name);
    static std::optional<double> NumberIn(const nlohmann::json& object, const char* name);

    /// Warns of members that nobody reads, with the nearest name: the first few of the whole text
    /// by name. where goes ahead of their names: 'Routing 2: '.
    void TellStrangers(const nlohmann::json& object, const std::vector<std::string>& known,
                       const std::string& where = {});
    /// Warns of how many more there were.
    void TellFurtherStrangers();

    void Warn(std::string sentence);
    std::vector<Issue> TakeIssues() { return std::move(issues); }

private:
    bool Fail(std::string sentence);
    bool FailFor(const JsonFault& fault, std::string_view text);
    bool CheckFormat();
    bool CheckVersion();

    std::string what;
    std::string format;
    int version;
    nlohmann::json root;
    std::vector<Issue> issues;
    size_t strangers = 0;  ///< members that nobody reads
};

}  // namespace Quorvan::Host
