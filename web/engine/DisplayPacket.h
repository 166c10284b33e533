#pragma once

#include <vector>

#include "host/instrument/DisplayFrame.h"

namespace Quorvan::Web {

/// A picture of the engine as one array of numbers, as a page gets it. Where what lies stands in
/// web/src/engine/DisplayLayout.ts.
class DisplayPacket {
public:
    DisplayPacket();

    void Fill(const Host::DisplayFrame& frame);
    const std::vector<float>& Numbers() const { return numbers; }

private:
    void FillScopes(const Host::DisplayFrame& frame);
    void FillGrains(const Host::DisplayFrame& frame);
    template <class Row>
    void Put(size_t at, const Row& row);

    std::vector<float> numbers;
};

}  // namespace Quorvan::Web
