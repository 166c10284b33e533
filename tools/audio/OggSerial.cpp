#include "tools/audio/OggSerial.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstring>
#include <numeric>
#include <vector>

#include "tools/support/Failure.h"

namespace Quorvan::Tools {

namespace {

constexpr uint32_t kSerial = 0x54455353;
constexpr size_t kHeader = 27;    // bytes ahead of the table of segments
constexpr size_t kSerialAt = 14;  // offsets in the header
constexpr size_t kChecksumAt = 22;
constexpr size_t kSegmentsAt = 26;

std::array<uint32_t, 256> BuildChecksums() {
    constexpr uint32_t kPolynomial = 0x04c11db7;
    std::array<uint32_t, 256> table{};
    for (uint32_t i = 0; i < table.size(); ++i) {
        uint32_t value = i << 24;
        for (int bit = 0; bit < 8; ++bit)
            value = (value << 1) ^ ((value & 0x80000000u) != 0 ? kPolynomial : 0u);
        table[i] = value;
    }
    return table;
}

uint32_t Checksum(const std::vector<uint8_t>& bytes) {
    static const std::array<uint32_t, 256> table = BuildChecksums();
    return std::accumulate(bytes.begin(), bytes.end(), uint32_t{0}, [](uint32_t sum, uint8_t byte) {
        return (sum << 8) ^ table[((sum >> 24) ^ byte) & 0xff];
    });
}

void Put(std::vector<uint8_t>& page, size_t at, uint32_t number) {
    for (size_t i = 0; i < 4; ++i)
        page[at + i] = static_cast<uint8_t>(number >> (8 * i));
}

/// Puts count more bytes of the file behind those of page. Answers whether there were as many.
bool Append(AtomicOutput& output, std::vector<uint8_t>& page, size_t count) {
    const size_t had = page.size();
    page.resize(had + count);
    return output.Read(page.data() + had, static_cast<int64_t>(count)) ==
           static_cast<int64_t>(count);
}

bool ReadPage(AtomicOutput& output, std::vector<uint8_t>& page) {
    page.clear();
    if (!Append(output, page, kHeader) || std::memcmp(page.data(), "OggS", 4) != 0)
        return false;
    const size_t segments = page[kSegmentsAt];
    if (!Append(output, page, segments))
        return false;
    const auto lengths = page.end() - static_cast<std::ptrdiff_t>(segments);
    return Append(output, page, std::accumulate(lengths, page.end(), size_t{0}));
}

}  // namespace

void FixOggSerial(AtomicOutput& output) {
    const int64_t length = output.Length();
    std::vector<uint8_t> page;
    for (int64_t at = 0; at < length; at += static_cast<int64_t>(page.size())) {
        output.Seek(at, SEEK_SET);
        if (!ReadPage(output, page))
            throw Failure(ExitCode::Output,
                          output.Text() + " came out damaged. Write another format.");
        Put(page, kSerialAt, kSerial);
        Put(page, kChecksumAt, 0);
        Put(page, kChecksumAt, Checksum(page));
        output.Seek(at, SEEK_SET);
        output.Write(page.data(), static_cast<int64_t>(page.size()));
    }
    output.ThrowIfFailed();
}

}  // namespace Quorvan::Tools
