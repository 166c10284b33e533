#pragma once

#include <cstdint>
#include <filesystem>
#include <functional>
#include <string>
#include <vector>

#include "host/instrument/Instrument.h"

namespace Quorvan::Live {

/// Parameters that wait, one after another, for the MIDI source that is to move them from then on.
/// What has been learnt is kept in a file.
///
/// A lesson that the window begins goes ahead, and the one that waited begins again behind it. One
/// that the window ends is left out.
class Lessons {
public:
    using Saying = std::function<void(const std::string&)>;

    /// Indices of the names, with the instrument's present settings. Throws std::invalid_argument,
    /// with a sentence, for a name that means nothing.
    Lessons(Host::Instrument& taught, const std::vector<std::string>& names,
            std::filesystem::path mapFile, Saying speaker);
    /// To be called now and then: tells what has been learnt, keeps it, and begins the next one.
    /// Throws Trouble where the file can't be written.
    void Look();

private:
    static constexpr uint32_t kLooksToGiveUp = 5;

    void Begin();
    void GiveUp();
    void Keep(const Host::MidiBinding& learnt);

    Host::Instrument& instrument;
    std::vector<uint32_t> waiting;  ///< the next one comes last
    std::filesystem::path file;
    Saying say;
    bool begun = false;
    uint32_t known = 0;        ///< lessons of the instrument when this one began
    bool interrupted = false;  ///< by a lesson that the window began
    uint32_t looksAtNothing = 0;
};

}  // namespace Quorvan::Live
