#pragma once

#include <filesystem>
#include <string>

namespace Quorvan::Tools {

/// "-" in the place of a file: standard input where it is read, standard output where it is
/// written. Both go by way of files without a name in the folder for temporary ones, which are gone
/// when the process is: any container can be read, since most have to be read back and forth, and
/// lengths in what is written are right.
namespace StandardStreams {

/// Keeps a file from taking the place of a stream that the program was started without, and what
/// is meant for the stream from landing in the file. To be called ahead of all files.
void HoldPlaces();

bool IsMeant(const std::filesystem::path& name);

/// A file without a name, open for reading and writing. Throws Failure where none can be made.
int OpenNameless();

/// All of standard input, read to its end by the first call. Answers a descriptor of its own that
/// stands at the start, to be closed by the caller. Throws Failure where that can't be read.
int OpenInput();
/// Throws Failure where standard output is a terminal, which sound would only confuse.
void CheckOutput();
/// Copies a file of OpenNameless to standard output. Throws Failure where that can't be written; a
/// reader that has gone ends the process.
void CopyToOutput(int file);

/// The file as sentences cite it: "in.wav" in quotes, or "Standard input".
std::string InputText(const std::filesystem::path& name);
/// Likewise, or "Standard output".
std::string OutputText(const std::filesystem::path& name);
/// The file ahead of what is told of it: out.wav, or standard output.
std::string Heading(const std::filesystem::path& name);

}  // namespace StandardStreams

}  // namespace Quorvan::Tools
