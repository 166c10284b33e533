#include "tools/batch/ResultsFile.h"

#include <fcntl.h>
#include <sys/file.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>

#include "host/parameters/Sentence.h"
#include "tools/support/Failure.h"
#include "tools/support/LineReader.h"

namespace Quorvan::Tools {

ResultsFile::ResultsFile(const std::filesystem::path& path, Start start)
    : name(path),
      file(open(path.c_str(),
                O_RDWR | O_CREAT | O_APPEND | O_CLOEXEC | (start == Start::New ? O_EXCL : 0),
                0666)) {
    if (file < 0)
        Refuse(errno == EEXIST
                   ? std::string("exists already. Go on with --resume, replace it with --force, or "
                                 "choose another name.")
                   : std::string("could not be written: ") + std::strerror(errno) + ".");
    if (flock(file, LOCK_EX | LOCK_NB) != 0 && errno == EWOULDBLOCK) {
        close(file);
        Refuse("is being written by another run. Wait for that, or choose another name.");
    }
    if (start == Start::Replace && ftruncate(file, 0) != 0)
        Refuse(std::string("could not be emptied: ") + std::strerror(errno) + ".");
    EndLastLine();
}

ResultsFile::~ResultsFile() { close(file); }

void ResultsFile::Refuse(const std::string& rest) const {
    throw Failure(ExitCode::Output, Host::Quoted(name.string()) + " " + rest);
}

/// A crash of the machine can have cut it.
void ResultsFile::EndLastLine() {
    char last = '\n';
    if (lseek(file, -1, SEEK_END) >= 0 && read(file, &last, 1) == 1 && last != '\n')
        Write("\n");
}

void ResultsFile::Write(const std::string& text) {
    for (size_t done = 0; done < text.size();) {
        const ssize_t count = write(file, text.data() + done, text.size() - done);
        if (count < 0 && errno != EINTR)
            Refuse(std::string("could not be written: ") + std::strerror(errno) + ".");
        done += count > 0 ? static_cast<size_t>(count) : 0;
    }
}

void ResultsFile::Add(const nlohmann::ordered_json& line) {
    using Handling = nlohmann::ordered_json::error_handler_t;
    Write(line.dump(-1, ' ', false, Handling::replace) + "\n");
}

void ResultsFile::Finish() {
    if (fsync(file) != 0 && errno != EINVAL && errno != ENOTSUP)
        Refuse(std::string("could not be written: ") + std::strerror(errno) + ".");
}

void ResultsFile::Read(const std::filesystem::path& path,
                       const std::function<void(const nlohmann::json&)>& take) {
    LineReader lines(path);
    while (const auto line = lines.Next()) {
        const nlohmann::json json = nlohmann::json::parse(*line, nullptr, false);
        if (json.is_object())
            take(json);
    }
}

}  // namespace Quorvan::Tools
