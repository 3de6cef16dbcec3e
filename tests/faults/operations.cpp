#include "faults/operations.h"

#include <fmt/format.h>
#include <gtest/gtest.h>

#include <fstream>

#include "db/serverregister.h"
#include "definitions/couplingfile.h"
#include "definitions/jobfile.h"
#include "definitions/joboptions.h"
#include "definitions/maskfile.h"
#include "history/runfolder.h"
#include "platform/error.h"
#include "platform/settings.h"
#include "platform/tsv.h"
#include "spreadsheet/workbookparts.h"
#include "startup/inifile.h"
#include "support/companyrows.h"

namespace kolmera::test {
namespace {

constexpr int kFewRecords = 60;

void define(const DataFolder& data) {
    JobFile jobs(data.path());
    MaskFile masks(data.path());
    CouplingFile couplings(data.path());
    for (const char* name : {"A", "B", "C"}) {
        Job job;
        job.name = name;
        jobs.save(job);
        Mask mask;
        mask.Namn = name;
        masks.save(mask, {{.Källa = 1, .Mål = name[0]}, {.Källa = 2, .Mål = name[0]}});
        couplings.save({.job = "(EIO)", .code = name, .supplier = "1", .mainSupplier = name[0] == 'A'});
    }
    JobOptionsFile(data.path()).setLimits("A", {.largestChange = 50});
    registerServer(data.path(), {"SQL;A", "A", "DSN=A"});
    SettingsStore settings(data.path() / "settings.ini");
    settings.set("Start", "Lang", "SE");
    const IniLine old{"Old", "1"};
    writeIniValues(data.path() / "DVKlient.ini", 1, {&old, 1});
}

/// Saving as the windows do it: what cannot be saved is told.
std::function<int(const DataFolder&, std::ostream&)> saving(const std::function<void(const DataFolder&)>& save) {
    return [save](const DataFolder& data, std::ostream& told) {
        try {
            save(data);
            return 0;
        } catch (const PlatformError& error) {
            told << error.what();
            return 1;
        }
    };
}

}  // namespace

Operations::Operations() : world_("tabs", kFewRecords), ran_(world_.before().path()) {
    EXPECT_EQ(ran_.run(world_.command(false)).exitCode, 0);
    std::string letter;
    for (int group = 0; group < 60; ++group) letter += fmt::format("N{}\t{}\r\n", group, group);
    for (const DataFolder* data : {&world_.before(), static_cast<const DataFolder*>(&ran_)}) {
        std::ofstream(data->path() / "brev.txt", std::ios::binary) << letter;
    }
    EXPECT_EQ(ran_.run({"discounts", "import", "1010", (ran_.path() / "brev.txt").string()}).exitCode, 0);
    std::filesystem::create_directory(defined_.path());
    define(defined_);
    addDefinitions();
    addCommands();
}

void Operations::addDefinitions() {
    const auto add = [&](const char* name, const std::function<void(const DataFolder&)>& save) {
        all_.push_back({.name = name, .before = &defined_, .carryOut = saving(save)});
    };
    add("job saved", [](const DataFolder& data) {
        JobFile jobs(data.path());
        Job job = *jobs.read(2);
        job.priceFile = "pris.txt";
        jobs.save(job, jobs.read(2), {.limits = Limits{.largestChange = 20}});
    });
    add("job removed", [](const DataFolder& data) {
        JobFile jobs(data.path());
        jobs.remove({*jobs.read(1)});
    });
    add("mask saved", [](const DataFolder& data) {
        MaskFile masks(data.path());
        Mask mask = masks.read(2)->mask;
        mask.Namn = "new";
        masks.save(mask, {{.Källa = 7, .Mål = 7}, {.Källa = 8, .Mål = 8}, {.Källa = 9, .Mål = 9}});
    });
    add("mask removed", [](const DataFolder& data) {
        MaskFile masks(data.path());
        masks.remove({masks.read(1)->mask});
    });
    add("main supplier moved", [](const DataFolder& data) {
        CouplingFile(data.path()).save({.job = "(EIO)", .code = "C", .supplier = "1", .mainSupplier = true});
    });
    add("limits set", [](const DataFolder& data) { JobOptionsFile(data.path()).setLimits("B", {.zeroPrices = 3}); });
    add("server registered", [](const DataFolder& data) { registerServer(data.path(), {"SQL;B", "B", "DSN=B"}); });
    add("setting set", [](const DataFolder& data) {
        SettingsStore settings(data.path() / "settings.ini");
        settings.set("Start", "Lang", "EN");
    });
    add("INI record set", [](const DataFolder& data) {
        const IniLine value{"Key", "new"};
        writeIniValues(data.path() / "DVKlient.ini", 1, {&value, 1});
    });
}

void Operations::addCommands() {
    const auto add = [&](const char* name, const DataFolder& before, bool inBatches, bool company,
                         const std::function<std::vector<std::string>(const DataFolder&)>& command) {
        all_.push_back(
            {name, &before,
             [command](const DataFolder& data, std::ostream& told) { return data.command(command(data))(told); },
             inBatches, company});
    };
    const auto file = [](const DataFolder& data, const char* name) { return (data.path() / name).string(); };
    add("run", world_.before(), true, true, [this](const DataFolder& /*data*/) { return world_.command(false); });
    add("run --empty", world_.before(), true, true,
        [this](const DataFolder& /*data*/) { return world_.command(true); });
    const std::string record = RunFolder(ran_.path()).list().front().id;
    add("undo", ran_, true, true, [record](const DataFolder& /*data*/) {
        return std::vector<std::string>{"undo", record};
    });
    add("letter read", world_.before(), false, true, [file](const DataFolder& data) {
        return std::vector<std::string>{"discounts", "import", "1010", file(data, "brev.txt")};
    });
    add("letter written", ran_, false, false, [file](const DataFolder& data) {
        return std::vector<std::string>{"discounts", "export", "1010", file(data, "brev.txt")};
    });
    add("workbook written", ran_, false, false, [file](const DataFolder& data) {
        return std::vector<std::string>{"discounts", "export", "1010", file(data, "ny.xlsx")};
    });
    all_.back().byLibrary = true;
    add("changes saved", ran_, false, false, [file](const DataFolder& data) {
        return std::vector<std::string>{"show", "last", "--save", file(data, "andrat.xlsx")};
    });
    all_.back().byLibrary = true;
}

namespace {

/// The parts of a workbook: when it was made is no part of what it holds.
std::string contentOf(const std::filesystem::path& workbook) {
    std::string content;
    for (const auto& [part, bytes] : readZip(workbook)) content += part + "\n" + bytes + "\n";
    return content;
}

}  // namespace

Content::Content(const DataFolder& data) {
    (void)JobFile(data.path()).all();
    rows = std::filesystem::exists(data.company()) ? data.rows() : "";
    files = data.otherFiles();
    for (auto& [name, content] : files) {
        if (name.ends_with(".xlsx")) content = contentOf(data.path() / name);
    }
}

std::string Content::differenceFrom(const Content& other) const {
    if (rows != other.rows) return firstDifference(rows, other.rows);
    return differenceFrom(other, other, true);
}

std::string Content::differenceFrom(const Content& old, const Content& now, bool rowsToo) const {
    if (rowsToo && rows != old.rows && rows != now.rows) return firstDifference(rows, now.rows);
    for (const auto* other : {&old, &now}) {
        for (const auto& [name, content] : other->files) {
            if (!files.contains(name) && old.files.contains(name)) return name + " is gone";
        }
    }
    for (const auto& [name, content] : files) {
        const auto was = old.files.find(name), is = now.files.find(name);
        if (was == old.files.end() && is == now.files.end()) continue;  // not finished, and nobody's
        if (was != old.files.end() && content == was->second) continue;
        if (is != now.files.end() && content == is->second) continue;
        return name + " is neither old nor new";
    }
    return {};
}

}  // namespace kolmera::test
