#include "host/parameters/NumberText.h"

#include "support/Test.h"

namespace Quorvan::Host {
namespace {

TEST(NumberTextTest, ThreeDigitsInTheUnitThatFits) {
    EXPECT_EQ(FormatNumber(999.6, Unit::Hertz), "1.00 kHz");  // rounding carries into the next unit
    EXPECT_EQ(FormatNumber(99.96, Unit::Hertz), "100 Hz");
    EXPECT_EQ(FormatNumber(0.0123, Unit::Hertz), "0.012 Hz");
    EXPECT_EQ(FormatNumber(0.25, Unit::Seconds), "250 ms");
    EXPECT_EQ(FormatNumber(-0.04, Unit::Decibels), "0.0 dB");  // no negative zero
    EXPECT_EQ(FormatNumber(-1500.0, Unit::Milliseconds), "-1.50 s");
    EXPECT_EQ(FormatNumber(4.0, Unit::Ratio), "4.00:1");
    EXPECT_EQ(FormatNumber(-std::numeric_limits<double>::infinity(), Unit::Decibels), "-inf dB");
}

TEST(NumberTextTest, OtherTextsAreNoNumbers) {
    for (const char* text :
         {"", " ", "Hz", "1 2", "1.2.3", "--1", "0x10", "nan", "inf", "1 parsec", "1e", "1e999"})
        EXPECT_FALSE(ParseNumber(text, Unit::Hertz).has_value()) << text;
    EXPECT_FALSE(ParseNumber("3 dB", Unit::Hertz).has_value());
    EXPECT_EQ(ParseNumber("-INF db", Unit::Decibels), -std::numeric_limits<double>::infinity());
    EXPECT_EQ(ParseNumber("\t.5e1 ", Unit::None), 5.0);
}

}  // namespace
}  // namespace Quorvan::Host
