#pragma once

#include <string>
#include <vector>

#include "framework/ModuleContainer.h"
#include "framework/UnitModule.h"

namespace Quorvan::test {

using Log = std::vector<std::string>;

/// What a leaf and a container have in common: both note which hooks run.
template <class Base>
class Recording : public Base {
public:
    template <class... Arguments>
    explicit Recording(Log* events, Arguments&&... arguments)
        : Base(std::forward<Arguments>(arguments)...), log(events) {}

    void OnSetup(float rate, uint32_t size) override {
        Note("setup " + std::to_string(static_cast<int>(rate)) + "/" + std::to_string(size));
    }
    void OnReset(bool hard) override { Note(hard ? "reset hard" : "reset soft"); }
    bool OnProcess(dsp::ProcessBlock&) override {
        Note(this->needsFullUpdate ? "process fully" : "process");
        return answer;
    }
    bool UpdateParameters(dsp::ProcessBlock&) override { return runs; }

    void Note(const std::string& what) {
        if (log != nullptr)
            log->push_back(this->name + ": " + what);
    }

    Log* log;
    bool runs = true;    ///< answer of UpdateParameters
    bool answer = true;  ///< answer of OnProcess
};

/// kCount linear parameters from 0 to 10, named "P1" on; two inputs, one output.
template <uint32_t kCount>
class FakeLeaf : public Recording<dsp::UnitModule> {
public:
    static constexpr uint32_t kParameterCount = kCount;

    explicit FakeLeaf(const char* moduleName, Log* events = nullptr)
        : Recording(events, moduleName, 2u, 1u,
                    Numbered("P", kCount, dsp::ParameterSpec::Linear("", 0.0f, 10.0f))) {}
};

}  // namespace Quorvan::test
