#include "history/warnings.h"

#include <fmt/format.h>
#include <fmt/ranges.h>
#include <gtest/gtest.h>

#include "db/productcolumns.h"

namespace kolmera {
namespace {

constexpr int kInpris = ordinal(kProdukt, "Inpris"), kSupplier = ordinal(kProdukt, "Leverantör"), kName = 6;

RowChange cell(std::int64_t id, std::int64_t record, int column, Value before, Value after) {
    return {.kind = ChangeKind::Changed,
            .table = "Produkt",
            .id = id,
            .record = record,
            .label = {},
            .cells = {{column, std::move(before), std::move(after)}}};
}

std::vector<RowChange> newSuppliers(int count) {
    std::vector<RowChange> changes;
    for (int i = 1; i <= count; ++i) changes.push_back(cell(i, i, kSupplier, std::string("1010"), std::string("1020")));
    return changes;
}

std::vector<RowChange> names(const std::vector<std::string>& texts) {
    std::vector<RowChange> changes;
    for (const std::string& text : texts) {
        const auto id = static_cast<std::int64_t>(changes.size()) + 1;
        changes.push_back(cell(id, id, kName, std::string(), text));
    }
    return changes;
}

std::vector<RecordRemark> remarks(const char* kind, std::int64_t count, const std::string& text) {
    std::vector<RecordRemark> remarks;
    for (std::int64_t record = 1; record <= count; ++record) {
        remarks.push_back(
            {.kind = kind, .record = record, .product = {}, .column = "Inpris", .text = text, .reason = {}});
    }
    return remarks;
}

RunHeader header(std::int64_t records, const std::string& sha256, const std::string& modified) {
    RunHeader run;
    run.counts = fmt::format(R"({{"records": {}}})", records);
    run.priceFile.sha256 = sha256;
    run.priceFile.modified = modified;
    return run;
}

TEST(Warnings, AreGivenForWhatLooksWrongAndForNothingElse) {
    const RunHeader plain = header(10, "a", "2026-02-01T00:00:00");
    const RunHeader before = header(12, "b", "2026-01-01T00:00:00");
    RunHeader undo = plain;
    undo.kind = RunKind::Undo;
    struct {
        const char* fault;
        std::string expected;  ///< "name:records ..."
        RunHeader run;
        RunHeader previous;
        std::vector<RowChange> changes = {};
        std::vector<RecordRemark> remarks = {};
    } const cases[] = {
        {"a sound run", "", plain, before, {cell(1, 1, kInpris, 10.0, 10.5)}},
        {"the same file", "same_file:", plain, plain},
        {"an older file", "older_file:", plain, header(10, "b", "2026-03-01T00:00:00")},
        {"half of the file is missing", "fewer_records:", plain, header(21, "b", "")},
        {"exactly half counted as far fewer", "", plain, header(20, "b", "")},
        {"a price that became 0", "zero_prices:7", plain, before, {cell(1, 7, kInpris, 10.0, 0.0)}},
        {"a 0 in another column", "", plain, before, {cell(1, 7, kName, std::string("0"), std::string("1"))}},
        {"hundredfold", "jumps:7", plain, before, {cell(1, 7, kInpris, 1.25, 124.0)}},
        {"a hundredth", "jumps:7", plain, before, {cell(1, 7, kInpris, 125.0, 1.25)}},
        {"eightfold taken for ten", "", plain, before, {cell(1, 7, kInpris, 1.0, 8.0)}},
        {"three prices a third higher",
         "median_change:",
         plain,
         before,
         {cell(1, 1, kInpris, 3.0, 4.0), cell(2, 2, kInpris, 3.0, 4.0), cell(3, 3, kInpris, 3.0, 4.0)}},
        {"two prices for one product",
         "key_twice:3,9",
         plain,
         before,
         {cell(1, 3, kInpris, 10.0, 11.0), cell(1, 9, kInpris, 11.0, 10.5)}},
        {"a price that one record writes in two steps",
         "",
         plain,
         before,
         {cell(1, 3, kInpris, 10.0, 11.0), cell(1, 3, kInpris, 11.0, 10.5)}},
        {"many new suppliers", "new_suppliers:1,2,3,4,5,6,7,8,9,10", plain, before, newSuppliers(10)},
        {"a few new suppliers", "", plain, before, newSuppliers(9)},
        {"a column without numbers",
         "never_number:1,2,3,4,5,6,7,8,9",
         plain,
         before,
         {},
         remarks("not_numbers", 9, "x1")},
        {"a line of headings", "heading_line:1", plain, before, {}, remarks("not_numbers", 1, "Pris")},
        {"the only record taken for a heading",
         "",
         header(1, "a", ""),
         header(1, "b", ""),
         {},
         remarks("not_numbers", 1, "Pris")},
        {"an undo called a jump", "", undo, before, {cell(1, 7, kInpris, 1.25, 124.0)}},
        {"a typing error taken for a heading", "", plain, before, {}, remarks("not_numbers", 1, "1O")},
        {"DOS letters", "characters:1,2,3", plain, before, names({"Sk†p", "M„rkning", "K”ksfl„kt"})},
        {"UTF-8", "characters:1,2,3", plain, before, names({"SkÃ¥p", "MÃ¤rkning", "KÃ¶ksflÃ¤kt"})},
        {"quotation marks in Swedish texts", "", plain, before, names({"Rör 3” mässing", "Låda „stor”", "Skåp"})},
        {"most records without product",
         "most_unmatched:1,2,3,4,5,6",
         plain,
         before,
         {},
         remarks("no_product", 6, "")}};
    for (const auto& c : cases) {
        SCOPED_TRACE(c.fault);
        NetChanges net;
        for (const RowChange& change : c.changes) net.add(change);
        net.finish();
        const ChangeFigures figures = changeFigures(net, c.run.counts);
        const auto forEachRemark = [&](const std::function<bool(const RecordRemark&)>& take) {
            for (const RecordRemark& remark : c.remarks) take(remark);
        };
        std::string found;
        for (const RunWarning& warning : runWarnings(c.run, net, figures, forEachRemark, &c.previous)) {
            found +=
                fmt::format("{}{}:{}", found.empty() ? "" : " ",
                            kWarningNames[static_cast<std::size_t>(warning.warning)], fmt::join(warning.records, ","));
        }
        EXPECT_EQ(found, c.expected);
    }
}

TEST(Warnings, CompareWithTheRunBeforeOfTheSameJobAndCompany) {
    const auto run = [](const char* id, const char* job, const char* company, const char* outcome, RunKind kind) {
        RunHeader header;
        header.id = id;
        header.started = id;
        header.job = job;
        header.companyFile = company;
        header.outcome = outcome;
        header.kind = kind;
        return header;
    };
    const std::vector<RunHeader> runs = {
        run("9", "A", "FTG1.MDB", "completed", RunKind::Run), run("8", "A", "FTG1.MDB", "completed", RunKind::Run),
        run("7", "A", "FTG1.MDB", "cancelled", RunKind::Run), run("6", "A", "FTG1.MDB", "completed", RunKind::Undo),
        run("5", "B", "FTG1.MDB", "completed", RunKind::Run), run("4", "A", "FTG2.MDB", "completed", RunKind::Run),
        run("3", "A", "ftg1.mdb", "completed", RunKind::Run)};
    const RunHeader* found = previousRun(runs, runs[1]);
    ASSERT_NE(found, nullptr);
    EXPECT_EQ(found->id, "3");
    EXPECT_EQ(previousRun(runs, runs[6]), nullptr);
    std::vector<RunHeader> ofOneSecond = {runs[1], runs[0]};  // in whatever order a folder lists them
    for (RunHeader& one : ofOneSecond) one.started = "9";
    EXPECT_EQ(previousRun(ofOneSecond, ofOneSecond[0]), nullptr) << "a later run of the same second";
    EXPECT_EQ(previousRun(ofOneSecond, ofOneSecond[1]), ofOneSecond.data());
    ofOneSecond[0].kind = RunKind::Preview;
    EXPECT_EQ(previousRun(ofOneSecond, ofOneSecond[0]), &ofOneSecond[1]) << "a run just before a preview";
}

}  // namespace
}  // namespace kolmera
