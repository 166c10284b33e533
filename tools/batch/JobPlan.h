#pragma once

#include <cstdint>
#include <filesystem>
#include <functional>
#include <string>
#include <vector>

#include "tools/batch/JobWords.h"
#include "tools/batch/NamePattern.h"
#include "tools/support/AtomicOutput.h"
#include "tools/support/FingerprintFile.h"

namespace Quorvan::Tools {

/// What a list of jobs is made of.
struct PlanSettings {
    std::vector<std::string> inputs;  ///< files and patterns of files; "-" is a list of names
    std::vector<std::string> presets;
    std::vector<uint64_t> seeds;  ///< none: jobs name none
    std::vector<std::string> assignments;
    std::vector<std::string> variants;  ///< "NAME=POSITION|POSITION..."
    std::vector<std::string> words;     ///< "WORD=VALUE"
    std::string name;                   ///< as NamePattern takes it
    bool asCsv = false;
};

/// The seeds of "3,7,10-12". Throws Failure where text is no such list, or one of more than a
/// million.
std::vector<uint64_t> ReadSeeds(const std::string& text);

/// All inputs times presets times variants times seeds, each a job of a list.
class JobPlan {
public:
    /// Throws Failure for presets and patterns that stand for nothing.
    explicit JobPlan(PlanSettings wanted);

    /// Answers how many there are. Throws Failure where there is none, where two would write to one
    /// file, or where they are no jobs.
    uint64_t Write(AtomicOutput& file);

private:
    void WriteInput(const std::string& input, AtomicOutput& file);
    void WriteJob(const NamePattern::Job& job, const std::string& preset,
                  const std::vector<std::string>& variant, AtomicOutput& file);
    std::string Line(const JobWords& words) const;
    void ForEachInput(const std::function<void(const std::string&)>& take) const;

    PlanSettings settings;
    NamePattern pattern;
    std::vector<std::vector<std::string>> variants;  ///< assignments of each
    FingerprintFile names;
    uint64_t count = 0;
};

}  // namespace Quorvan::Tools
