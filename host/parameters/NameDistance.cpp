#include "host/parameters/NameDistance.h"

#include <algorithm>
#include <array>

#include "host/parameters/NumberText.h"
#include "host/parameters/Sentence.h"

namespace Quorvan::Host {

namespace {

std::string_view LastPart(std::string_view name) {
    const size_t separator = name.rfind('_');
    return separator == std::string_view::npos ? name : name.substr(separator + 1);
}

/// "pan random" and "random pan" are the same so.
std::string WithWordsInOrder(std::string_view name) {
    std::vector<std::string_view> words;
    while (!name.empty()) {
        const size_t end = std::min(name.find(' '), name.size());
        words.push_back(name.substr(0, end));
        name.remove_prefix(std::min(end + 1, name.size()));
    }
    std::sort(words.begin(), words.end());
    std::string ordered;
    for (const std::string_view word : words)
        ordered.append(word).append(1, ' ');
    return ordered;
}

/// Distance as a person sees it, both texts in lower case.
size_t Unlikeness(std::string_view typed, std::string_view name) {
    size_t unlike = EditDistance(typed, name);
    unlike = std::min(unlike, EditDistance(typed, LastPart(name)) + 1);
    constexpr size_t kPartLength = 3;  // shorter parts are in too many names
    for (size_t blank = name.find(' '); blank < name.size() - std::min(name.size(), kPartLength);
         blank = name.find(' ', blank + 1))
        unlike = std::min(unlike, EditDistance(typed, name.substr(blank + 1)) + 1);
    const bool isOneWord = typed.find(' ') == std::string_view::npos;
    if (const size_t first = std::min(name.find(' '), name.size());
        isOneWord && first >= kPartLength)
        unlike = std::min(unlike, EditDistance(typed, name.substr(0, first)) + 1);
    if (!isOneWord && WithWordsInOrder(typed) == WithWordsInOrder(name))
        unlike = std::min<size_t>(unlike, 1);
    if (typed.size() >= kPartLength && name.find(typed) != std::string_view::npos)
        unlike = std::min<size_t>(unlike, 2);
    return unlike;
}

}  // namespace

size_t EditDistance(std::string_view a, std::string_view b) {
    // Three rows of the table: swaps look two rows back.
    std::array<std::vector<size_t>, 3> rows;
    for (std::vector<size_t>& row : rows)
        row.resize(b.size() + 1);
    for (size_t j = 0; j <= b.size(); ++j)
        rows[0][j] = j;
    for (size_t i = 1; i <= a.size(); ++i) {
        std::vector<size_t>& row = rows[i % 3];
        const std::vector<size_t>& above = rows[(i + 2) % 3];
        const std::vector<size_t>& twoAbove = rows[(i + 1) % 3];
        row[0] = i;
        for (size_t j = 1; j <= b.size(); ++j) {
            const size_t exchange = above[j - 1] + (a[i - 1] == b[j - 1] ? 0 : 1);
            row[j] = std::min({above[j] + 1, row[j - 1] + 1, exchange});
            if (i > 1 && j > 1 && a[i - 1] == b[j - 2] && a[i - 2] == b[j - 1])
                row[j] = std::min(row[j], twoAbove[j - 2] + 1);
        }
    }
    return rows[a.size() % 3][b.size()];
}

std::string BareName(std::string_view name) {
    std::string bare = Lower(name);
    std::erase_if(bare, [](char c) { return !(c >= 'a' && c <= 'z') && !(c >= '0' && c <= '9'); });
    return bare;
}

std::vector<std::string> NearestNames(std::string_view typed,
                                      const std::vector<std::string>& candidates, size_t count) {
    const std::string lower = Lower(Trim(typed));
    const size_t farthest = std::max<size_t>(2, lower.size() / 2);
    std::vector<std::pair<size_t, size_t>> ranked;  // unlikeness, place
    for (size_t i = 0; i < candidates.size(); ++i) {
        const size_t unlike = Unlikeness(lower, Lower(candidates[i]));
        if (unlike <= farthest)
            ranked.emplace_back(unlike, i);
    }
    std::sort(ranked.begin(), ranked.end());
    std::vector<std::string> nearest;
    for (size_t i = 0; i < std::min(count, ranked.size()); ++i) {
        if (ranked[i].first > ranked[0].first + 1)
            break;  // plainly not what was meant, beside the first
        nearest.push_back(candidates[ranked[i].second]);
    }
    return nearest;
}

std::string DidYouMean(const std::vector<std::string>& names) {
    if (names.empty())
        return {};
    return "Did you mean " + Alternatives(names) + "?";
}

}  // namespace Quorvan::Host
