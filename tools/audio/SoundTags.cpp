#include "tools/audio/SoundTags.h"

#include <sndfile.h>

namespace Quorvan::Tools {

namespace {

const char* NameOf(int kind) {
    switch (kind) {
        case SF_STR_TITLE:
            return "title";
        case SF_STR_COPYRIGHT:
            return "copyright";
        case SF_STR_ARTIST:
            return "artist";
        case SF_STR_DATE:
            return "date";
        case SF_STR_ALBUM:
            return "album";
        case SF_STR_LICENSE:
            return "license";
        case SF_STR_TRACKNUMBER:
            return "track";
        case SF_STR_GENRE:
            return "genre";
        default:
            return nullptr;
    }
}

/// The start of a text, up to the end of a letter.
std::string Start(const std::string& text) {
    if (text.size() <= SoundTags::kLongest)
        return text;
    size_t end = SoundTags::kLongest;
    while (end > 0 && (static_cast<unsigned char>(text[end]) & 0xc0) == 0x80)
        --end;
    return text.substr(0, end);
}

/// The last lines of a text that fit into room.
std::string LastLines(const std::string& text, size_t room) {
    if (text.size() <= room)
        return text;
    const size_t line = text.find('\n', text.size() - room - 1);
    return line == std::string::npos ? std::string() : text.substr(line + 1);
}

}  // namespace

SoundTags::SoundTags(sf_private_tag* file) {
    for (int kind = SF_STR_FIRST; kind <= SF_STR_LAST; ++kind) {
        const char* const text = sf_get_string(file, kind);
        if (text != nullptr && *text != '\0')
            texts[kind] = text;
    }
}

void SoundTags::WriteTo(sf_private_tag* file) const {
    for (const auto& [kind, text] : texts)
        sf_set_string(file, kind, Start(text).c_str());
}

const std::string& SoundTags::Comment() const {
    static const std::string none;
    const auto found = texts.find(SF_STR_COMMENT);
    return found == texts.end() ? none : found->second;
}

void SoundTags::AddToComment(const std::string& line) {
    const std::string last = Start(line);
    const std::string before = last.size() < SoundTags::kLongest
                                   ? LastLines(Comment(), SoundTags::kLongest - last.size() - 1)
                                   : std::string();
    texts[SF_STR_COMMENT] = before.empty() ? last : before + "\n" + last;
}

void SoundTags::SetSoftware(const std::string& name) { texts[SF_STR_SOFTWARE] = name; }

std::map<std::string, std::string> SoundTags::Named() const {
    std::map<std::string, std::string> named;
    for (const auto& [kind, text] : texts) {
        if (const char* const name = NameOf(kind))
            named[name] = text;
    }
    return named;
}

}  // namespace Quorvan::Tools
