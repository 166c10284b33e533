#pragma once

#include "tools/support/AtomicOutput.h"

namespace Quorvan::Tools {

/// Replaces the stream number in every page of a finished OGG file by a fixed one. The library that
/// writes such files draws it from the clock, which would make each run's file another one.
/// Layout of pages and their checksum: RFC 3533.
void FixOggSerial(AtomicOutput& output);

}  // namespace Quorvan::Tools
