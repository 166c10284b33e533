#include "tools/audio/AudioFormat.h"

#include <sndfile.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <iterator>
#include <optional>
#include <string_view>

#include "host/parameters/NumberText.h"
#include "host/parameters/Sentence.h"
#include "tools/support/Failure.h"
#include "tools/support/StandardStreams.h"

namespace Quorvan::Tools {

namespace {

struct Container {
    std::string_view name;
    std::string_view endings;  ///< of file names, each with blanks around it
    int code;
    std::string_view text;
};
constexpr std::array kContainers{
    Container{"wav", " .wav .wave ", SF_FORMAT_WAV, "WAV"},
    Container{"aiff", " .aiff .aif ", SF_FORMAT_AIFF, "AIFF"},
    Container{"flac", " .flac ", SF_FORMAT_FLAC, "FLAC"},
    Container{"ogg", " .ogg .oga .opus ", SF_FORMAT_OGG, "OGG"},
    Container{"caf", " .caf ", SF_FORMAT_CAF, "CAF"},
    Container{"raw", "", SF_FORMAT_RAW | SF_ENDIAN_LITTLE, "raw"},
};

struct Encoding {
    std::string_view name;
    int code;
    uint32_t bits;
    std::string_view text;
};
constexpr std::array kEncodings{
    Encoding{"16", SF_FORMAT_PCM_16, 16, "16 bit"},
    Encoding{"24", SF_FORMAT_PCM_24, 24, "24 bit"},
    Encoding{"32", SF_FORMAT_PCM_32, 32, "32 bit"},
    Encoding{"float", SF_FORMAT_FLOAT, 0, "32 bit float"},
    Encoding{"vorbis", SF_FORMAT_VORBIS, 0, "Vorbis"},
    Encoding{"opus", SF_FORMAT_OPUS, 0, "Opus"},
};

constexpr const char* kKnown =
    "Known are the containers wav, aiff, flac, ogg, caf and raw, and the encodings 16, 24, 32, "
    "float, vorbis and opus; both together are written wav-float.";

template <class Table>
const typename Table::value_type* Find(const Table& table, std::string_view name) {
    for (const auto& entry : table) {
        if (entry.name == name)
            return &entry;
    }
    return nullptr;
}

const Container& ContainerOf(const std::filesystem::path& name) {
    if (StandardStreams::IsMeant(name))
        return *Find(kContainers, "wav");
    std::string ending(" ");
    ending.append(Host::Lower(name.extension().string())).append(" ");
    for (const Container& container : kContainers) {
        if (ending.size() > 2 && container.endings.find(ending) != std::string_view::npos)
            return container;
    }
    throw Failure(ExitCode::Usage, "The ending of " + Host::Quoted(name.string()) +
                                       " tells no sound format. Let the name end in .wav, .aiff, "
                                       ".flac, .ogg or .caf, or name the format with --format.");
}

const Encoding& UsualEncoding(const Container& container, const std::filesystem::path& name) {
    if (container.name == "raw")
        return *Find(kEncodings, "float");
    if (container.code != SF_FORMAT_OGG)
        return *Find(kEncodings, "24");
    return *Find(kEncodings, name.extension() == ".opus" ? "opus" : "vorbis");
}

struct Wanted {
    const Container* container = nullptr;
    const Encoding* encoding = nullptr;
};

Wanted Understand(const std::string& text) {
    Wanted wanted;
    const std::string lower = Host::Lower(text);
    for (size_t at = 0; at < lower.size();) {
        const size_t end = std::min(lower.find('-', at), lower.size());
        const std::string_view word = std::string_view(lower).substr(at, end - at);
        if (const Container* container = Find(kContainers, word))
            wanted.container = container;
        else if (const Encoding* encoding = Find(kEncodings, word))
            wanted.encoding = encoding;
        else
            throw Failure(ExitCode::Usage,
                          "--format " + Host::Quoted(text) + " is unknown. " + kKnown);
        at = end + 1;
    }
    // An encoding that has only one home brings it along.
    if (wanted.container == nullptr && wanted.encoding != nullptr &&
        (wanted.encoding->name == "vorbis" || wanted.encoding->name == "opus"))
        wanted.container = Find(kContainers, "ogg");
    return wanted;
}

/// The check of the library below lets Opus pass at every rate, and the writer fails afterwards.
bool OpusLacks(const Encoding& encoding, int rate) {
    constexpr std::array kRates{8000, 12000, 16000, 24000, 48000};
    return encoding.code == SF_FORMAT_OPUS &&
           std::find(kRates.begin(), kRates.end(), rate) == kRates.end();
}

}  // namespace

AudioFormat AudioFormat::Choose(const std::filesystem::path& name, const std::string& wanted,
                                double rate, uint32_t channels) {
    const Wanted asked = Understand(wanted);
    const Container& container = asked.container != nullptr ? *asked.container : ContainerOf(name);
    const Encoding& encoding =
        asked.encoding != nullptr ? *asked.encoding : UsualEncoding(container, name);
    SF_INFO info{};
    info.samplerate = static_cast<int>(std::lround(rate));
    info.channels = static_cast<int>(channels);
    info.format = container.code | encoding.code;
    AudioFormat format{encoding.bits, info.format, container.code == SF_FORMAT_OGG,
                       std::string(container.text) + ", " + std::string(encoding.text)};
    if (OpusLacks(encoding, info.samplerate))
        throw Failure(ExitCode::Usage, "There is no " + format.text + " file at " +
                                           std::to_string(info.samplerate) +
                                           " Hz. Add --rate 48000, or choose another --format.");
    if (sf_format_check(&info) == 0)
        throw Failure(ExitCode::Usage, "There is no " + format.text + " file at " +
                                           std::to_string(info.samplerate) +
                                           " Hz. Choose another --format. " + kKnown);
    return format;
}

std::vector<std::string> AudioFormat::Names() {
    std::vector<std::string> names;
    names.reserve(std::size(kContainers) + std::size(kEncodings));
    for (const Container& container : kContainers)
        names.emplace_back(container.name);
    for (const Encoding& encoding : kEncodings)
        names.emplace_back(encoding.name);
    return names;
}

}  // namespace Quorvan::Tools
