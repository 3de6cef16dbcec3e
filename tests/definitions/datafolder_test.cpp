#include "definitions/datafolder.h"

#include "definitions/jobfile.h"
#include "platform/error.h"
#include "platform/restrictedpath.h"
#include "startup/startup.h"
#include "startup/startworld.h"

namespace kolmera::test {
namespace {

TEST(DataFolder, ANewFolderHasTheSuitesFiles) {
    StartWorld world;
    const std::filesystem::path folder = world.root / "new/data";
    createDataFolder(folder);
    for (const char* name : {"DORVIK.FTG", "PRISMASK.TXT", "PRISMPOS.TXT", "PRISLEV.TXT"}) {
        EXPECT_TRUE(std::filesystem::exists(folder / name) && std::filesystem::file_size(folder / name) == 0) << name;
    }
    std::string jobs;
    for (const Job& job : JobFile(folder).all()) jobs += job.name + job.kind + " " + job.company + "\n";
    EXPECT_EQ(jobs, "(EIO)E FTG1.mdb\n(RSK)R FTG1.mdb\n(FINFO)F FTG1.mdb\n");
    EXPECT_EQ(std::filesystem::file_size(folder / "KOLMERA.TXT"), 3U * 534U);

    StartState state = world.state();
    state.DataMapp = folder.string() + "/";
    LäsDorvikIni(state);
    EXPECT_EQ(state.StandardFöretag, "FTG1.MDB");
    EXPECT_TRUE(state.TypsnittTahoma);
    EXPECT_EQ(state.InloggningsLäge, 0);
    EXPECT_EQ(std::filesystem::file_size(folder / "DORVIK.INI"), 11U * 72U);
}

TEST(DataFolder, WhatIsThereStays) {
    StartWorld world;
    world.write(world.data / "dorvik.ini", iniFile({"", "FTG7.MDB"}));
    world.write(world.data / "prismask.txt", "mask");
    Job eio;
    eio.name = "(EIO)";
    eio.company = "FTG7.mdb";
    JobFile(world.data).save(eio);
    createDataFolder(world.data);
    EXPECT_EQ(world.root.read("data/dorvik.ini"), iniFile({"", "FTG7.MDB"}));
    EXPECT_EQ(world.root.read("data/prismask.txt"), "mask");
    EXPECT_FALSE(std::filesystem::exists(world.data / "PRISMASK.TXT"));
    std::string jobs;
    for (const Job& job : JobFile(world.data).all()) jobs += job.name + " " + job.company + "\n";
    EXPECT_EQ(jobs, "(EIO) FTG7.mdb\n(RSK) FTG1.mdb\n(FINFO) FTG1.mdb\n");

    world.root.write("file", "");
    EXPECT_THROW(createDataFolder(world.root / "file"), PlatformError);
    const RestrictedPath closed(world.root.path(), 0);
    EXPECT_THROW(createDataFolder(world.root.path()), PlatformError) << "a folder that cannot be entered";
}

}  // namespace
}  // namespace kolmera::test
