#include "pricing/listsetting.h"

#include <gtest/gtest.h>

namespace kolmera {
namespace {

TEST(ListSetting, TakesTheFirstEntryOfAList) {
    const struct {
        const char *fault, *setting, *first, *ninth;
    } cases[] = {
        {"last entry wins over the first", "1=EUR;1=USD", "EUR", "SEK"},
        {"empty text taken for the standard", "1=;9=USD", "", "USD"},
        {"order of the entries kept", "9=USD;1=EUR", "EUR", "USD"},
        {"value cut at its equals sign", "1=A=B", "A=B", "SEK"},
        {"two digits read as one", "10=EUR;19=USD", "SEK", "SEK"},
        {"blank passed over", " 1=EUR", "SEK", "SEK"},
        {"list 0 taken", "0=EUR;=;;9", "SEK", "SEK"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.fault);
        ListSetting setting("SEK");
        setting.read("1=NOK;9=NOK");
        setting.read(c.setting);
        EXPECT_EQ(setting.of(1), c.first);
        EXPECT_EQ(setting.of(9), c.ninth);
    }
}

}  // namespace
}  // namespace kolmera
