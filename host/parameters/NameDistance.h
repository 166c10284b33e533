#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace Quorvan::Host {

/// How many letters have to be put in, taken out, exchanged or swapped with their neighbour to make
/// one text of the other: V. I. Levenshtein, "Binary codes capable of correcting deletions,
/// insertions and reversals" (1966), with F. J. Damerau's swaps.
size_t EditDistance(std::string_view a, std::string_view b);

/// A name without case, blanks and signs: "dry/wet" and "Dry / Wet" are the same so.
std::string BareName(std::string_view name);

/// The candidates most like typed, whatever the case, best first; among equals those that come
/// earlier. Left out are those that have too little in common, with typed or beside the best. A
/// name that typed is a part of, or whose end behind a "_" or a blank is like it, counts as near.
std::vector<std::string> NearestNames(std::string_view typed,
                                      const std::vector<std::string>& candidates, size_t count);

/// 'Did you mean "A", "B" or "C"?', or the empty text where there are no names.
std::string DidYouMean(const std::vector<std::string>& names);

}  // namespace Quorvan::Host
