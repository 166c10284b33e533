#include "tools/manualpictures/DiagramSheet.h"

#include "tools/support/AtomicOutput.h"

namespace Quorvan::Tools {

namespace {

constexpr int kWidth = 860;  // pixels
constexpr double kLeft = 72.0;
constexpr double kRight = 18.0;
constexpr double kTop = 40.0;
constexpr double kBetweenColumns = 78.0;
constexpr double kBetweenRows = 86.0;
constexpr double kFoot = 50.0;

int Height(size_t rows, double height) {
    return static_cast<int>(kTop + kFoot + static_cast<double>(rows) * height +
                            static_cast<double>(rows - 1) * kBetweenRows);
}

}  // namespace

DiagramSheet::DiagramSheet(size_t rows, size_t columns, double height)
    : across(columns),
      tall(height),
      wide((kWidth - kLeft - kRight - static_cast<double>(columns - 1) * kBetweenColumns) /
           static_cast<double>(columns)),
      page(kWidth, Height(rows, height)) {}

Diagram DiagramSheet::Add(const std::string& title, const Scale& horizontal,
                          const Scale& vertical) {
    const size_t above = next / across;
    const auto row = static_cast<double>(above);
    const auto column = static_cast<double>(next % across);
    ++next;
    return {
        page,
        {kLeft + column * (wide + kBetweenColumns), kTop + row * (tall + kBetweenRows), wide, tall},
        title,
        horizontal,
        vertical};
}

void DiagramSheet::Save(const std::string& file) const {
    AtomicOutput output(file, true);
    page.Save(output);
    output.Commit();
}

}  // namespace Quorvan::Tools
