#include "basictools/math/mapping/PotardMappingVariant.h"

#include <utility>

namespace Quorvan::MappingTools {

namespace {

struct AddressOf {
    const IPotardMapping* operator()(const IPotardMapping& curve) const { return &curve; }
    const IPotardMapping* operator()(const IPotardMapping* heldElsewhere) const {
        return heldElsewhere;
    }
};

}  // namespace

// A variant throws only where it holds nothing, and no move of a curve can leave it so.
// NOLINTNEXTLINE(bugprone-exception-escape)
PotardMappingVariant::PotardMappingVariant(PotardMappingVariant&& other) noexcept
    : storage(std::move(other.storage)) {
    other.storage.emplace<LinearPotardMapping>();
}

// NOLINTNEXTLINE(bugprone-exception-escape)
PotardMappingVariant& PotardMappingVariant::operator=(PotardMappingVariant&& other) noexcept {
    if (this != &other) {
        storage = std::move(other.storage);
        other.storage.emplace<LinearPotardMapping>();
    }
    return *this;
}

const IPotardMapping* PotardMappingVariant::Get() const { return std::visit(AddressOf{}, storage); }

}  // namespace Quorvan::MappingTools
