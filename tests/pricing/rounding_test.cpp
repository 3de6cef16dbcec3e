#include "pricing/rounding.h"

#include <gtest/gtest.h>

namespace kolmera {
namespace {

TEST(Rounding, AvrundaHalvor) {
    const struct {
        const char* fault;
        double x, expected;
    } cases[] = {
        {"0.25 sent down", 7.25, 7.5},
        {"below 0.25 sent up", 7.2499, 7},
        {"0.75 kept at the half", 7.75, 8},
        {"below 0.75 sent up", 7.74, 7.5},
        {"negative counted from zero", -1.2, -1},
        {"negative half sent to the whole", -1.5, -1.5},
        {"negative quarter counted downwards", -1.75, -1.5},
        {"whole number moved", -3, -3},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.fault);
        EXPECT_EQ(AvrundaHalvor(c.x), c.expected);
    }
}

TEST(Rounding, NästanLika) {
    const struct {
        const char* fault;
        double a, b;
        bool expected;
    } cases[] = {
        {"bound left out", 1.000, 1.001, true},
        {"bound left out, the other way", 1.001, 1.000, true},
        {"too wide", 1.000, 1.0011, false},
        {"too wide, the other way", 1.0011, 1.000, false},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.fault);
        EXPECT_EQ(NästanLika(c.a, c.b), c.expected);
    }
}

TEST(Rounding, PriceFormulas) {
    EXPECT_DOUBLE_EQ(TBFrånPålägg(125, 25), 25);
    EXPECT_EQ(TBFrånPålägg(125, 0), 0);
    EXPECT_EQ(PrisFrånTG(75, 25), 100);
    EXPECT_EQ(PrisFrånTG(80, -60), 50);
}

}  // namespace
}  // namespace kolmera
