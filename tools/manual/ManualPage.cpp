#include "tools/manual/ManualPage.h"

#include <sstream>

#include "tools/manual/CommandTexts.h"

namespace Quorvan::Tools {

namespace {

// Changes with the page's own words.
constexpr const char* kRevised = "2026-11-25";

/// Sentences in lines of a fair length, which are set anew anyway.
std::string Wrapped(std::string text) {
    constexpr size_t kLongest = 72;
    for (size_t start = 0; text.size() - start > kLongest;) {
        const size_t blank = text.rfind(' ', start + kLongest);
        if (blank == std::string::npos || blank <= start)
            break;
        text[blank] = '\n';
        start = blank + 1;
    }
    return text;
}

/// Text as roff reads it: hyphens that can be copied, and no line that looks like a request.
std::string Roff(const std::string& text) {
    std::string safe;
    for (const char letter : text) {
        const bool startsLine = safe.empty() || safe.back() == '\n';
        if (startsLine && (letter == '.' || letter == '\''))
            safe += "\\&";
        if (letter == '\\')
            safe += "\\e";
        else if (letter == '-')
            safe += "\\-";
        else
            safe += letter;
    }
    return safe;
}

std::string Bold(const std::string& text) { return "\\fB" + Roff(text) + "\\fR"; }
std::string Slanted(const std::string& text) { return "\\fI" + Roff(text) + "\\fR"; }

/// "-o, --output FILE".
std::string Heading(const OptionText& option) {
    std::string text;
    for (const std::string& name : option.names)
        text += (text.empty() ? "" : ", ") + Bold(name);
    if (!option.value.empty())
        text += (text.empty() ? "" : " ") + Slanted(option.value);
    return text;
}

/// Sentences of help texts come without their last full stop.
std::string Sentence(const OptionText& option) {
    std::string text = option.description;
    const size_t note = text.find("(default:");
    if (!option.range.empty() && note != std::string::npos)
        text.insert(note + 1, option.range + ", ");
    else if (!option.range.empty())
        text += " (" + option.range + ")";
    return Roff(Wrapped(text)) + ".";
}

std::string Synopsis(const CommandText& command) {
    std::string text = Bold("tesserae " + command.name);
    for (const OptionText& option : command.options)
        if (option.IsArgument() || option.isRequired)
            text += " " + (option.isRequired ? Heading(option) : "[" + Heading(option) + "]");
    return text + " [" + Slanted("options") + "]";
}

void PutOptions(std::ostream& page, const CommandText& command) {
    for (const OptionText& option : command.options)
        page << ".TP\n" << Heading(option) << "\n" << Sentence(option) << "\n";
}

void PutCommand(std::ostream& page, const CommandText& command) {
    page << ".SS " << Roff(command.name) << "\n"
         << Synopsis(command) << "\n.PP\n"
         << Roff(Wrapped(command.description)) << ".\n";
    PutOptions(page, command);
    if (!command.footer.empty())
        page << ".PP\n.nf\n" << Roff(command.footer) << "\n.fi\n";
}

}  // namespace

std::string ManualPage(const CLI::App& program) {
    std::ostringstream page;
    const CommandText whole = DescribeCommand(program);
    page << ".TH TESSERAE 1 " << kRevised
         << " \"Tesserae " TESSERAE_VERSION "\" \"User Commands\"\n.nh\n.ad l\n"
         << ".SH NAME\ntesserae \\- render sound through a live granular processor\n"
         << ".SH SYNOPSIS\n"
         << Bold("tesserae") << " " << Slanted("command") << " [" << Slanted("options") << "]\n"
         << ".SH DESCRIPTION\n"
         << Roff(whole.description) << "\n.SH OPTIONS\n";
    PutOptions(page, whole);
    page << ".SH COMMANDS\n";
    for (const CommandText& command : DescribeCommands(program))
        PutCommand(page, command);
    // The heading takes the place of the list's first line.
    page << ".SH EXIT STATUS\n.nf\n"
         << Roff(whole.footer.substr(whole.footer.find('\n') + 1)) << "\n.fi\n";
    return page.str();
}

}  // namespace Quorvan::Tools
