#include "tools/batch/JobResult.h"

#include "tools/support/Fingerprint.h"

namespace Quorvan::Tools {

using Json = nlohmann::ordered_json;

namespace {

Json Begin(uint64_t line, bool isDone, const BatchJob* job) {
    Json json{{"line", line}, {"ok", isDone}};
    if (job == nullptr)
        return json;
    json["input"] = job->settings.input.string();
    json["output"] = job->settings.output.string();
    json["job"] = Fingerprint::TextOf(job->fingerprint);
    return json;
}

}  // namespace

Json DoneResult(const BatchJob& job, const Summary& summary, uint64_t bytes) {
    Json json = Begin(job.line, true, &job);
    json["bytes"] = bytes;
    // The summary's own words.
    const Json whole = Json::parse(summary.Json());
    for (const char* const word :
         {"preset", "seed", "rate", "channels", "seconds", "tailEnd", "peakDb", "loudnessLufs",
          "grains", "cpuShare", "elapsedSeconds", "clippedSamples", "warnings"})
        json[word] = whole[word];
    if (!job.settings.measuresLoudness)
        json.erase("loudnessLufs");
    return json;
}

Json FaultResult(uint64_t line, const BatchJob* job, const Failure& failure) {
    Json json = Begin(line, false, job);
    json["code"] = static_cast<int>(failure.Code());
    json["sentence"] = failure.what();
    return json;
}

}  // namespace Quorvan::Tools
