#include "tools/support/FingerprintFile.h"

#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <string>

#include "tools/support/Failure.h"
#include "tools/support/StandardStreams.h"

namespace Quorvan::Tools {

namespace {

/// 0 marks an empty place.
uint64_t Kept(uint64_t fingerprint) { return std::max<uint64_t>(fingerprint, 1); }

[[noreturn]] void Refuse() {
    throw Failure(ExitCode::Output,
                  std::string("A list in the folder for temporary files can't be kept: ") +
                      std::strerror(errno) + ". Let TMPDIR name a folder with room.");
}

}  // namespace

FingerprintFile::FingerprintFile() : file(StandardStreams::OpenNameless()) {}

FingerprintFile::~FingerprintFile() { close(file); }

uint64_t FingerprintFile::PlaceOf(uint64_t fingerprint) const { return fingerprint >> (64 - bits); }

/// What lies behind the end of the file is empty.
FingerprintFile::Bucket FingerprintFile::ReadBucket(int from, uint64_t place) {
    Bucket bucket{};
    if (pread(from, bucket.data(), sizeof bucket, static_cast<off_t>(place * sizeof bucket)) < 0)
        Refuse();
    return bucket;
}

void FingerprintFile::WriteBucket(int to, uint64_t place, const Bucket& bucket) {
    const auto at = static_cast<off_t>(place * sizeof bucket);
    if (pwrite(to, bucket.data(), sizeof bucket, at) != static_cast<ssize_t>(sizeof bucket))
        Refuse();
}

bool FingerprintFile::Contains(uint64_t fingerprint) const {
    const uint64_t kept = Kept(fingerprint);
    const Bucket bucket = ReadBucket(file, PlaceOf(kept));
    return std::find(bucket.begin(), bucket.end(), kept) != bucket.end();
}

bool FingerprintFile::Insert(uint64_t fingerprint) {
    const uint64_t kept = Kept(fingerprint);
    for (;;) {
        Bucket bucket = ReadBucket(file, PlaceOf(kept));
        const auto place = std::find_if(bucket.begin(), bucket.end(), [kept](uint64_t there) {
            return there == 0 || there == kept;
        });
        if (place == bucket.end()) {
            Split();
            continue;
        }
        if (*place == kept)
            return false;
        *place = kept;
        WriteBucket(file, PlaceOf(kept), bucket);
        return true;
    }
}

void FingerprintFile::Split() {
    const int wider = StandardStreams::OpenNameless();
    const uint64_t count = uint64_t{1} << bits;
    ++bits;
    for (uint64_t place = 0; place < count; ++place) {
        const Bucket bucket = ReadBucket(file, place);
        std::array<Bucket, 2> halves{};
        std::array<size_t, 2> filled{};
        for (const uint64_t kept : bucket) {
            const size_t half = PlaceOf(kept) & 1;
            if (kept != 0)
                halves[half][filled[half]++] = kept;
        }
        WriteBucket(wider, 2 * place, halves[0]);
        WriteBucket(wider, 2 * place + 1, halves[1]);
    }
    close(file);
    file = wider;
}

}  // namespace Quorvan::Tools
