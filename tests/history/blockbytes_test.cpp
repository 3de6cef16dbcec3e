#include "history/blockbytes.h"

#include <gtest/gtest.h>

#include <bit>
#include <limits>

#include "platform/error.h"

namespace kolmera::test {
namespace {

TEST(BlockBytes, EveryValueComesBackToTheBit) {
    const double numbers[] = {0.0,
                              -0.0,
                              0.1,
                              -19.9999,
                              73.42,
                              1e15,
                              1e-7,
                              1.0 / 3,
                              922337203685477.0,
                              1e300,
                              5e-324,
                              std::numeric_limits<double>::infinity(),
                              std::numeric_limits<double>::quiet_NaN()};
    BlockWriter writer;
    for (const double number : numbers) writer.value(number);
    const Value others[] = {Null{},
                            true,
                            false,
                            std::int64_t{-1},
                            std::numeric_limits<std::int64_t>::min(),
                            Date{-600000},
                            std::string("å\0b", 4),
                            std::string()};
    for (const Value& value : others) writer.value(value);
    for (const char* word : {"Produkt", "Levprislista", "Produkt"}) writer.word(word);
    BlockReader reader(writer.bytes());
    for (const double number : numbers) {
        EXPECT_EQ(std::bit_cast<std::uint64_t>(std::get<double>(reader.value())), std::bit_cast<std::uint64_t>(number));
    }
    for (const Value& value : others) EXPECT_EQ(reader.value(), value);
    for (const char* word : {"Produkt", "Levprislista", "Produkt"}) EXPECT_EQ(reader.word(), word);
    EXPECT_TRUE(reader.atEnd());
}

TEST(BlockBytes, DamagedBytesAreRefusedAndNotReadBeyond) {
    for (const std::string& bytes : {std::string(1, '\x06') + "\x7Fx", std::string(1, '\x08'), std::string(11, '\xFF'),
                                     std::string(1, '\x04'), std::string()}) {
        BlockReader reader(bytes);
        EXPECT_THROW((void)reader.value(), PlatformError);
    }
}

}  // namespace
}  // namespace kolmera::test
