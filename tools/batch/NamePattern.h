#pragma once

#include <cstdint>
#include <filesystem>
#include <string>

namespace Quorvan::Tools {

/// The pattern by which outputs are named: "out/{stem}-{preset}-{seed}.wav".
class NamePattern {
public:
    /// What the words in braces stand for in one job.
    struct Job {
        std::filesystem::path input;
        std::string preset;  ///< its name, or its file's without folder and ending
        std::string seed;
        uint64_t variant = 1;
        uint64_t number = 1;
    };

    explicit NamePattern(std::string text) : pattern(std::move(text)) {}
    /// Throws Failure for a word in braces that stands for nothing.
    std::string Of(const Job& job) const;

private:
    static std::string Value(const std::string& word, const Job& job);

    std::string pattern;
};

}  // namespace Quorvan::Tools
