#include "startup/scramble.h"

#include <gtest/gtest.h>

#include "platform/error.h"
#include "startup/passwordfile.h"
#include "support/temporaryfolder.h"

namespace kolmera::test {
namespace {

TEST(Scramble, ShiftsByThePositionAndBack) {
    EXPECT_EQ(scramble("zzzzzzzzz"), "wtqnkhewt") << "step, or length of the run";
    EXPECT_EQ(scramble(std::string("\x02\0", 2)), "\xFF\xFA") << "does not go on from 255";
    std::string everyByte;
    for (int byte = 0; byte < 256; ++byte) everyByte += static_cast<char>(byte);
    EXPECT_EQ(unscramble(scramble(everyByte)), everyByte);
}

TEST(PasswordFile, KeepsPasswordsByName) {
    const TemporaryFolder folder;
    const PasswordFile file(folder.path());
    EXPECT_EQ(file.find("FTG1.mdb"), "");
    EXPECT_FALSE(std::filesystem::exists(folder / "DVDefLog.bin")) << "looking up makes the file";
    file.save("Ftg1.mdb", "hemligt");
    file.save("FTGÅÄÖ-LÅNGT-NAMN-MED-MERA.MDB", "räksmörgås");
    file.save("FTG1.MDB", "nytt");
    EXPECT_EQ(folder.read("DVDefLog.bin").size(), 60U) << "a second password of a company is added";
    EXPECT_EQ(folder.read("DVDefLog.bin").find("nytt"), std::string::npos) << "readable at a glance";
    EXPECT_EQ(file.find("ftg1.MDB"), "nytt");
    EXPECT_EQ(file.find("ftgåäö-långt-namn-med-annat.mdb"), "räksmörgås") << "more than 20 characters compared";
    EXPECT_EQ(file.find("FTG2.MDB"), "");
    EXPECT_THROW(file.save("FTG2.MDB", "elva tecken"), PlatformError);
}

}  // namespace
}  // namespace kolmera::test
