#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cmath>

#include "cli/climachine.h"
#include "platform/jet/jetmessages.h"
#include "startup/accessimport.h"

namespace kolmera::test {
namespace {

using ::testing::HasSubstr;

/// A file that says of itself that it has an Access format, and holds nothing.
std::string accessFile(const std::string& format, char version = 1) {
    std::string bytes = std::string("\0\1\0\0", 4) + format + std::string({'\0', version});
    bytes.resize(8192);
    return bytes;
}

class AccessMachine : public CliMachine {
  public:
    AccessMachine() {
        EXPECT_EQ(run({"new", data()}), 0) << err();
        write(file("FTG5.mdb"), accessFile("Standard Jet DB"));
        write(file("FTG6.mdb"), accessFile("Standard ACE DB", 2));
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
        {"a file of a later format", "FTG6.mdb", "", 1, "nyare Access-format"},
        {"no file of that kind", "other.mdb", "FTG7.mdb", 1, "Inget företag har gjorts"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.fault);
        EXPECT_EQ(machine.import(machine.file(c.name), c.company), c.code);
        EXPECT_THAT(machine.err(), HasSubstr(c.told));
        EXPECT_EQ(machine.out(), "");
    }
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

TEST(ImportAccess, IsNamedWhereAJobsCompanyIsSuchAFile) {
    DemoMachine machine;
    AccessMachine::write(machine.company(), accessFile("Standard Jet DB"));
    for (const std::vector<std::string>& line : std::vector<std::vector<std::string>>{
             {"run", "(FINFO)"}, {"preview", "(FINFO)"}, {"product", "1", "--company", "FTG1.mdb"}}) {
        std::vector<std::string> whole = line;
        whole.insert(whole.end(), {"--data", machine.data()});
        EXPECT_NE(machine.run(whole), 0);
        EXPECT_THAT(machine.err(), HasSubstr("import-access")) << line.front();
    }
}

struct AsCell {
    jet::Cell operator()(Null) const { return jet::Nothing{}; }
    jet::Cell operator()(Date date) const { return jet::Moment{static_cast<double>(date.day)}; }
    template <typename Same>
    jet::Cell operator()(const Same& value) const {
        return value;
    }
};

/// A company as a reader would tell it.
std::string toldBy(Database& company) {
    std::string tables;
    std::string rows;
    for (std::uint32_t number = 0; const std::string& name : company.tableNames()) {
        const TableDef& table = company.table(name);
        jet::Table told{.name = name, .rows = 0, .columns = {}, .indexes = {}};
        for (const FieldDef& field : table.fields) {
            told.columns.push_back({.name = field.name,
                                    .type = static_cast<jet::ColumnType>(field.type),
                                    .size = static_cast<std::uint32_t>(field.size),
                                    .counter = field.counter,
                                    .standard = field.defaultNull ? "" : "0"});
        }
        rows += jet::beginningMessage(number++);
        const auto records = company.open("SELECT * FROM " + name, RecordsetType::Snapshot);
        for (; !records->eof(); records->moveNext(), ++told.rows) {
            jet::Row row;
            for (std::size_t i = 0; i < table.fields.size(); ++i) {
                const Value& value = records->value(static_cast<int>(i));
                const bool currency = table.fields[i].type == FieldType::Currency && !isNull(value);
                row.push_back(currency ? jet::Cell(jet::TenThousandths{std::llround(std::get<double>(value) * 10000)})
                                       : std::visit(AsCell(), value));
            }
            rows += jet::rowMessage(row);
        }
        tables += jet::tableMessage(told);
    }
    return tables + rows + jet::endMessage();
}

// No program here writes files of that format, so the reader is a script.
TEST(ImportAccess, MakesACompanyThatRunsLikeTheOneItWas) {
    DemoMachine original;
    DemoMachine machine;
    AccessMachine::write(machine.file("said"), toldBy(*machine.open()));
    AccessMachine::write(machine.file("reader"), "#!/bin/sh\n/bin/cat '" + machine.file("said") + "'\n");
    std::filesystem::permissions(machine.file("reader"), std::filesystem::perms::owner_all);
    const AccessResult result = importAccessFile({.reader = machine.file("reader"),
                                                  .file = machine.file("said"),
                                                  .company = machine.company(),
                                                  .companyName = "",
                                                  .replace = true,
                                                  .options = {}},
                                                 [](const AccessProgress&) { return true; });
    EXPECT_TRUE(result.remarks.empty());
    EXPECT_EQ(toldBy(*machine.open()), toldBy(*original.open()));
    const int code = original.runJob("(FINFO)");
    EXPECT_EQ(machine.runJob("(FINFO)"), code);
    EXPECT_EQ(machine.err(), original.err());
    EXPECT_EQ(toldBy(*machine.open()), toldBy(*original.open()));
}

}  // namespace
}  // namespace kolmera::test
