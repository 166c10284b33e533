#pragma once

namespace Quorvan::Tools {

/// What the program tells the shell that started it. docs/renderer.md lists them for users.
enum class ExitCode : int {
    Success = 0,
    Internal = 1,    ///< a fault of the program or of the machine, such as no memory
    Usage = 2,       ///< the command line asks for something that does not exist
    Input = 3,       ///< a file that is to be read can't be used
    Output = 4,      ///< a file can't be written
    Unsound = 5,     ///< the doctor found something wrong
    SomeFailed = 6,  ///< jobs of a batch failed, others did not
    Signal = 128     ///< plus the signal's number: 130 after Ctrl-C, 143 after a terminate
};

}  // namespace Quorvan::Tools
