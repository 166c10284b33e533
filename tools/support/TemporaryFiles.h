#pragma once

#include <csignal>
#include <cstddef>
#include <string>

namespace Quorvan::Tools {

/// The unfinished files of this process, known to its signal handlers, which remove them when the
/// process is told to end.
///
/// Threads  any may call; handlers may interrupt them anywhere but inside a SignalPause.
namespace TemporaryFiles {

/// From now on SIGINT, SIGTERM and SIGHUP remove what is registered, say so, and end the process
/// with ExitCode::Signal plus the signal's number. SIGPIPE removes them and ends it as ever. The
/// signal for the limit of a file's size is left to the writes, which then fail.
void InstallHandlers();

/// Registers a path, and answers the place to forget it by. Throws Failure where too many are open.
size_t Add(const std::string& path);
void Forget(size_t place);

}  // namespace TemporaryFiles

/// Holds back the signals that end the process for as long as it lives.
class SignalPause {
public:
    SignalPause();
    ~SignalPause();
    SignalPause(const SignalPause&) = delete;
    SignalPause& operator=(const SignalPause&) = delete;

private:
    sigset_t before;
};

}  // namespace Quorvan::Tools
