#include "tools/support/StandardStreams.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <vector>

#include "host/parameters/Sentence.h"
#include "tools/support/Failure.h"

namespace Quorvan::Tools::StandardStreams {

namespace {

constexpr size_t kPiece = 1 << 16;  // bytes copied at once

[[noreturn]] void Refuse(ExitCode code, const std::string& what, int error) {
    throw Failure(code, what + ": " + std::strerror(error) + ".");
}

bool WriteAll(int to, const char* data, size_t bytes) {
    while (bytes > 0) {
        const ssize_t count = write(to, data, bytes);
        if (count < 0)
            return false;
        data += count;
        bytes -= static_cast<size_t>(count);
    }
    return true;
}

/// Copies up to the end of from. Calls failedRead or failedWrite, which throw, with the error.
template <class Reading, class Writing>
void Copy(int from, int to, Reading failedRead, Writing failedWrite) {
    std::vector<char> piece(kPiece);
    for (;;) {
        const ssize_t count = read(from, piece.data(), piece.size());
        if (count < 0)
            failedRead(errno);
        if (count <= 0)
            return;
        if (!WriteAll(to, piece.data(), static_cast<size_t>(count)))
            failedWrite(errno);
    }
}

int TakeInput() {
    if (isatty(STDIN_FILENO) != 0)
        throw Failure(ExitCode::Usage,
                      "Standard input is a terminal. Send a sound file into it, such as "
                      "\"tesserae render - -o out.wav < in.wav\", or name the file.");
    const int file = OpenNameless();
    Copy(
        STDIN_FILENO, file,
        [](int error) { Refuse(ExitCode::Input, "Standard input can't be read", error); },
        [](int error) {
            Refuse(ExitCode::Output,
                   "Standard input can't be kept in the folder for temporary files", error);
        });
    return file;
}

}  // namespace

void HoldPlaces() {
    for (const int stream : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO}) {
        // A new descriptor takes the lowest number. From this one nothing can be read or written.
        if (fcntl(stream, F_GETFD) < 0)
            open("/dev/null", O_PATH);
    }
}

bool IsMeant(const std::filesystem::path& name) { return name == "-"; }

int OpenNameless() {
    std::error_code unknown;
    std::string name = (std::filesystem::temp_directory_path(unknown) / "tesserae-XXXXXX").string();
    const int file = unknown ? -1 : mkostemp(name.data(), O_CLOEXEC);
    if (file < 0)
        throw Failure(ExitCode::Output, "No temporary file could be made at " + Host::Quoted(name) +
                                            ". Let TMPDIR name a folder that can be written.");
    unlink(name.c_str());
    return file;
}

int OpenInput() {
    // One for the process: several renders may read it, but it can be taken only once.
    static const int taken = TakeInput();
    const int file = fcntl(taken, F_DUPFD_CLOEXEC, 0);
    if (file < 0 || lseek(file, 0, SEEK_SET) < 0)
        Refuse(ExitCode::Input, "Standard input can't be read", errno);
    return file;
}

void CheckOutput() {
    if (isatty(STDOUT_FILENO) != 0)
        throw Failure(
            ExitCode::Usage,
            "Standard output is a terminal, which can't show files. Send it on with \"|\" "
            "or \">\", or name a file.");
}

void CopyToOutput(int file) {
    const auto failed = [](int error) {
        Refuse(ExitCode::Output, "Standard output could not be written", error);
    };
    if (lseek(file, 0, SEEK_SET) < 0)
        failed(errno);
    Copy(file, STDOUT_FILENO, failed, failed);
}

std::string InputText(const std::filesystem::path& name) {
    return IsMeant(name) ? "Standard input" : Host::Quoted(name.string());
}

std::string OutputText(const std::filesystem::path& name) {
    return IsMeant(name) ? "Standard output" : Host::Quoted(name.string());
}

std::string Heading(const std::filesystem::path& name) {
    return IsMeant(name) ? "standard output" : Host::Visible(name.string());
}

}  // namespace Quorvan::Tools::StandardStreams
