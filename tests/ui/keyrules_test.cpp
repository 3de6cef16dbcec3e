#include "ui/rules/keyrules.h"

#include <gtest/gtest.h>

namespace kolmera {
namespace {

TEST(KeyRules, NumberFieldTakesDigitsOneSignAndOneMinus) {
    const struct {
        const char* fault;
        const char* field;
        int key;
        bool decimals, minus, accepted;
    } cases[] = {
        {"a digit refused", "", '7', false, false, true},
        {"second decimal sign taken", "12,5", ',', true, false, false},
        {"decimal sign taken though not allowed", "12", ',', false, false, false},
        {"decimal sign refused though allowed", "12", ',', true, false, true},
        {"the other locale's sign taken", "12", '.', true, true, false},
        {"minus refused behind digits", "12,5", '-', true, true, true},
        {"second minus taken", "-1", '-', true, true, false},
        {"minus taken though not allowed", "", '-', true, false, false},
        {"Backspace refused", "1", keys::kBackspace, false, false, true},
        {"Tab refused", "1", keys::kTab, false, false, true},
        {"Enter refused", "1", keys::kEnter, false, false, true},
        {"Esc taken", "1", keys::kEscape, true, true, false},
        {"a letter taken", "1", 'e', true, true, false},
        {"a digit of another script taken", "1", 0x0661, true, true, false},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.fault);
        EXPECT_EQ(NumeriskTangent(c.field, c.key, ',', c.decimals, c.minus), c.accepted ? c.key : keys::kRejected);
    }
}

TEST(KeyRules, SpärraTangentStopsEnterEscAndApostrophe) {
    for (const int key : {keys::kEnter, keys::kEscape, static_cast<int>('\'')}) EXPECT_EQ(SpärraTangent(key), 0);
    for (const int key : {keys::kTab, static_cast<int>('"'), 0xE5}) EXPECT_EQ(SpärraTangent(key), key);
}

}  // namespace
}  // namespace kolmera
