#pragma once

#include <cstdint>

#include <nlohmann/json.hpp>

#include "tools/batch/BatchJob.h"
#include "tools/render/Summary.h"
#include "tools/support/Failure.h"

namespace Quorvan::Tools {

/// The line of a batch's results for a job that is done; bytes are those of its output.
nlohmann::ordered_json DoneResult(const BatchJob& job, const Summary& summary, uint64_t bytes);
/// And for one that failed; job is null where its line could not be read.
nlohmann::ordered_json FaultResult(uint64_t line, const BatchJob* job, const Failure& failure);

}  // namespace Quorvan::Tools
