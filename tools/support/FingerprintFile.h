#pragma once

#include <array>
#include <cstdint>

namespace Quorvan::Tools {

/// A set of fingerprints that lies in a file without a name in the folder for temporary ones, so
/// that it takes no memory however large it grows: 13 to 30 bytes of disk for each.
///
/// Method  buckets by the first bits, as many as needed for none to overflow; where one does, all
///         are split in two.
class FingerprintFile {
public:
    /// Throws Failure where no file can be made, as all functions do where it can't be used.
    FingerprintFile();
    ~FingerprintFile();
    FingerprintFile(const FingerprintFile&) = delete;
    FingerprintFile& operator=(const FingerprintFile&) = delete;

    /// Answers whether it was not there yet.
    bool Insert(uint64_t fingerprint);
    bool Contains(uint64_t fingerprint) const;

private:
    using Bucket = std::array<uint64_t, 64>;  // 0 where nothing stands

    uint64_t PlaceOf(uint64_t fingerprint) const;
    static Bucket ReadBucket(int from, uint64_t place);
    static void WriteBucket(int to, uint64_t place, const Bucket& bucket);
    void Split();

    int file;
    int bits = 4;  ///< of a fingerprint that tell its bucket
};

}  // namespace Quorvan::Tools
