#pragma once

namespace Quorvan::Tools::StopRequest {

/// From now on SIGINT, SIGTERM and SIGHUP only ask for an end, which the program comes to where
/// nothing is half. Another one ends it at once, as TemporaryFiles says.
void Install();

/// The signal that has asked; 0 where none has. Any thread may call.
int Signal();

}  // namespace Quorvan::Tools::StopRequest
