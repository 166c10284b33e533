#include "tools/render/UnheardSettings.h"

#include <algorithm>
#include <utility>

#include "host/parameters/Sentence.h"

namespace Quorvan::Tools {

namespace {

/// '"A"', or '"A" and 3 settings more'.
std::string Named(const std::string& title, size_t more) {
    std::string text = Host::Quoted(title);
    if (more > 0)
        text.append(" and ")
            .append(std::to_string(more))
            .append(more == 1 ? " setting" : " settings")
            .append(" more");
    return text;
}

}  // namespace

void UnheardSettings::Ask(AskedSetting asked, const Host::PresentSettings& settings) {
    if (std::optional<std::string> reason = needs.Missing(asked.index, settings))
        waiting.push_back({std::move(asked), std::move(*reason)});
}

void UnheardSettings::See(const Host::PresentSettings& settings) {
    std::erase_if(waiting, [&](const Waiting& one) {
        return !needs.Missing(one.asked.index, settings).has_value();
    });
}

std::vector<std::string> UnheardSettings::Sentences(const Host::ParameterCatalog& catalog) const {
    std::vector<std::string> sentences;
    std::vector<bool> told(waiting.size());
    for (size_t i = 0; i < waiting.size(); ++i) {
        if (told[i])
            continue;
        size_t more = 0;
        for (size_t k = i + 1; k < waiting.size(); ++k) {
            if (waiting[k].reason != waiting[i].reason ||
                waiting[k].asked.source != waiting[i].asked.source)
                continue;
            told[k] = true;
            ++more;
        }
        sentences.push_back(waiting[i].asked.source + ": " +
                            Named(catalog[waiting[i].asked.index].title, more) +
                            " without effect: " + waiting[i].reason);
    }
    return sentences;
}

}  // namespace Quorvan::Tools
