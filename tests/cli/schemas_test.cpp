#include <fmt/format.h>
#include <gtest/gtest.h>
#include <sys/wait.h>

#include <algorithm>
#include <cstdio>
#include <fstream>
#include <nlohmann/json.hpp>

#include "cli/climachine.h"
#include "cli/summaryfile.h"

namespace kolmera::test {
namespace {

/// What in the files, named schema by schema, is not as docs/schemas/NAME.schema.json says, by a validator that knows
/// nothing of us.
struct Validation {
    int exitCode = 0;
    std::string faults;
};

Validation validate(const std::vector<std::pair<std::string, std::string>>& schemasAndFiles) {
    std::string command =
        "PATH=/usr/bin:/bin PYTHONIOENCODING=utf-8 python3 '" KOLMERA_SOURCE_DIR "/tests/cli/check_schema.py'";
    for (const auto& [schema, file] : schemasAndFiles) {
        command += fmt::format(" '{}/docs/schemas/{}.schema.json' '{}'", KOLMERA_SOURCE_DIR, schema, file);
    }
    Validation found;
    FILE* pipe = popen(command.c_str(), "r");
    for (int c = 0; pipe != nullptr && (c = std::fgetc(pipe)) != EOF;) found.faults += static_cast<char>(c);
    found.exitCode = WEXITSTATUS(pclose(pipe));
    return found;
}

constexpr int kNoValidator = 77;
#define SKIP_WITHOUT_VALIDATOR(validation) \
    if ((validation).exitCode == kNoValidator) GTEST_SKIP() << "python3-jsonschema is not installed"

std::string outcomeOf(const std::string& file) {
    return nlohmann::json::parse(std::ifstream(file)).at("outcome").get<std::string>();
}

}  // namespace

TEST(Schemas, HoldForASummaryOfEveryOutcome) {
    DemoMachine machine;
    const std::atomic<bool> cancel{false};
    const cli::SummaryFile running(machine.file("running"), "(EIO)", cancel);
    std::vector<std::pair<std::string, std::string>> files = {{"summary", machine.file("running")}};
    EXPECT_EQ(outcomeOf(files[0].second), "running");
    ASSERT_EQ(machine.run({"limits", "(RSK)", "--data", machine.data(), "--set", "largest-change=1"}), 0);
    const struct {
        const char* job;
        std::vector<std::string> options;
        bool cancelled;
        const char* outcome;
    } cases[] = {
        {"Finns ej", {}, false, "stopped"},       {"Smedhult verktyg", {}, true, "cancelled"},
        {"(RSK)", {}, false, "beyond_limits"},    {"(EIO)", {"--empty"}, false, "done_with_remarks"},
        {"Granlid arbetsbok", {}, false, "done"}, {"(EIO)", {"--file", machine.file("none.txt")}, false, "stopped"}};
    for (const auto& c : cases) {
        SCOPED_TRACE(c.outcome);
        machine.cancel = c.cancelled;
        files.emplace_back("summary", machine.file(fmt::format("s{}", files.size())));
        std::vector<std::string> options = {"--summary", files.back().second};
        options.insert(options.end(), c.options.begin(), c.options.end());
        (void)machine.runJob(c.job, options);
        EXPECT_EQ(outcomeOf(files.back().second), c.outcome) << machine.err();
    }
    const Validation good = validate(files);
    SKIP_WITHOUT_VALIDATOR(good);
    EXPECT_EQ(good.exitCode, 0);
    EXPECT_EQ(good.faults, "");

    auto summary = nlohmann::ordered_json::parse(std::ifstream(files[5].second));
    summary["exit_code"] = 1;  // of a run that is done
    summary.erase("new");
    summary["remarks"]["not_numbers"]["count"] = -1;
    summary["more"] = 1;
    std::ofstream(machine.file("bad")) << summary;
    const std::string faults = validate({{"summary", machine.file("bad")}}).faults;
    EXPECT_EQ(std::ranges::count(faults, '\n'), 4) << "the schema lets faults through: " << faults;
}

TEST(Schemas, HoldForWhatCommandsPrint) {
    DemoMachine machine;
    std::vector<std::pair<std::string, std::string>> files;
    const auto keep = [&](const char* schema, std::vector<std::string> command, int exitCode = cli::exitcode::kDone) {
        SCOPED_TRACE(schema);
        command.emplace_back("--json");
        if (command.front() != "inspect" && command.front() != "registers")
            command.insert(command.end(), {"--data", machine.data()});
        EXPECT_EQ(machine.run(command), exitCode) << machine.err();
        files.emplace_back(schema, machine.file(fmt::format("output{}", files.size())));
        std::ofstream(files.back().second) << machine.out();
    };
    const std::string prices = machine.data() + "/Prisfiler/";
    for (const char* delivery : {"EK-1;Skruv;st;1,00 kr;\r\n", ""}) {
        std::ofstream(prices + "EKHULT.CSV", std::ios::app) << delivery;
        (void)machine.runJob("Ekhult semikolonlista");
        std::filesystem::resize_file(prices + "EKHULT.CSV", std::filesystem::file_size(prices + "EKHULT.CSV") - 300);
    }
    keep("compare", {"compare", "last"});
    const std::string rows = machine.file("rows.csv");
    std::ofstream(rows) << "Kod;Levreskontra;Annat\nXAA;1,5;a\nXAB;b;c\n";
    keep("register-import", {"register", "currencies", "import", rows}, cli::exitcode::kPassedOver);
    ASSERT_EQ(machine.runJob("Granlid arbetsbok"), cli::exitcode::kDone);
    const struct {
        const char* schema;
        std::vector<std::string> command;
    } cases[] = {{"jobs", {"jobs"}},
                 {"changes", {"preview", "Granlid arbetsbok"}},
                 {"changes", {"show", "last"}},
                 {"undo", {"undo", "last", "--dry-run"}},
                 {"undo", {"undo", "last"}},
                 {"changes", {"show", "last"}},
                 {"inspect", {"inspect", rows}},
                 {"inspect", {"inspect", prices + "GRANLID.XLSX"}},
                 {"explain", {"explain", "Bruknäs skruv och beslag", "SK20060"}},
                 {"limits", {"limits", "(EIO)", "--set", "largest-change=1"}},
                 {"couplings", {"couplings", "(FINFO)"}},
                 {"source", {"source", "Granlid arbetsbok"}},
                 {"source", {"source", "(EIO)"}},
                 {"product", {"product", "SK20060"}},
                 {"registers", {"registers"}},
                 {"register-columns", {"register", "currencies", "columns"}},
                 {"register-list", {"register", "suppliers", "list"}},
                 {"register-show", {"register", "suppliers", "show", "3020"}},
                 {"history", {"history"}}};
    for (const auto& c : cases) keep(c.schema, c.command);
    const Validation good = validate(files);
    SKIP_WITHOUT_VALIDATOR(good);
    EXPECT_EQ(good.exitCode, 0);
    EXPECT_EQ(good.faults, "");
}

}  // namespace kolmera::test
