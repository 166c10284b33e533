#pragma once

namespace Quorvan::Tools {

/// The whole program: reads the command line, runs the command, and turns every way of failing into
/// a sentence on the error stream and an exit code.
int RunProgram(int count, const char* const* arguments);

}  // namespace Quorvan::Tools
