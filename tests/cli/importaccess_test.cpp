#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "cli/climachine.h"

namespace kolmera::test {
namespace {

using ::testing::HasSubstr;

/// A file that says of itself that it has an Access format, and holds nothing.
std::string accessFile(const std::string& format) {
    std::string bytes = std::string("\0\1\0\0", 4) + format;
    bytes.resize(8192);
    return bytes;
}

class AccessMachine : public CliMachine {
  public:
    AccessMachine() {
        EXPECT_EQ(run({"new", data()}), 0) << err();
        write(file("FTG5.mdb"), accessFile("Standard Jet DB"));
        write(file("FTG6.mdb"), accessFile("Standard ACE DB") + std::string(8192, '\0'));
        write(file("other.mdb"), "an ordinary text");
    }
    static void write(const std::string& name, const std::string& bytes) {
        std::ofstream(name, std::ios::binary) << bytes;
    }
    int import(const std::string& name, const std::string& company = "") {
        std::vector<std::string> line = {"import-access", name, "--data", data()};
        if (!company.empty()) line.insert(line.end(), {"--company", company});
        return run(line);
    }
};

TEST(ImportAccess, SaysWhyNoCompanyIsMade) {
    AccessMachine machine;
    const struct {
        const char* fault;
        std::string name, company;
        int code;
        const char* told;
    } cases[] = {
        {"a name that no list shows", "other.mdb", "", 2, "inget namn på en företagsfil"},
        {"a company in another folder", "FTG5.mdb", "../FTG5.mdb", 2, "inget namn på en företagsfil"},
        {"a company that is there", "FTG5.mdb", "FTG1.mdb", 1, "--replace"},
        {"a file that is not there", "FTG8.mdb", "", 1, "finns inte"},
        {"an empty file", "FTG5.mdb", "", 1, "skadad"},
        {"no file of that kind", "other.mdb", "FTG7.mdb", 1, "Inget företag har gjorts"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.fault);
        EXPECT_EQ(machine.import(machine.file(c.name), c.company), c.code);
        EXPECT_THAT(machine.err(), HasSubstr(c.told));
        EXPECT_EQ(machine.out(), "");
    }
    machine.import(machine.file("FTG6.mdb"));
    EXPECT_THAT(machine.err(), HasSubstr("Inget företag har gjorts"));
    for (const char* company : {"FTG5.mdb", "FTG6.mdb", "FTG7.mdb"}) {
        EXPECT_FALSE(std::filesystem::exists(std::filesystem::path(machine.data()) / company)) << company;
    }
}

TEST(ImportAccess, IsNamedWhereSuchAFileIsOpened) {
    AccessMachine machine;
    const std::string inside = machine.data() + "/FTG5.mdb";
    const std::string bytes = accessFile("Standard Jet DB");
    AccessMachine::write(inside, bytes);
    for (const std::vector<std::string>& line :
         std::vector<std::vector<std::string>>{{"copy-company", "FTG5.mdb", "FTG9.mdb", "--data", machine.data()},
                                               {"repair", "FTG5.mdb", "--data", machine.data()},
                                               {"discounts", "export", "1", machine.file("letter.txt"), "--company",
                                                "FTG5.mdb", "--data", machine.data()}}) {
        EXPECT_NE(machine.run(line), 0);
        EXPECT_THAT(machine.err(), HasSubstr("import-access")) << line.front();
    }
    EXPECT_EQ(machine.import(inside), 1) << "the file would be replaced by its company";
    EXPECT_THAT(machine.err(), HasSubstr("Flytta den ur datamappen"));
    std::ifstream stream(inside, std::ios::binary);
    EXPECT_EQ(std::string(std::istreambuf_iterator<char>(stream), {}), bytes);
}

}  // namespace
}  // namespace kolmera::test
