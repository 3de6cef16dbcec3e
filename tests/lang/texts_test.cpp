#include <fmt/format.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cctype>
#include <map>
#include <regex>
#include <set>

#include "db/companyschema.h"
#include "platform/lettercase.h"
#include "platform/tsv.h"

namespace kolmera::test {
namespace {

namespace fs = std::filesystem;

const fs::path kProject(KOLMERA_SOURCE_DIR);

/// A marker of each kind, as often as the text has it; nothing of an empty text or of one with an unknown marker.
std::multiset<std::string> markersOf(const std::string& text) {
    static const std::regex marker("<[^<>]*>"), known("<(LF|CRLF|TAB|SP|VAR[123])>");
    std::multiset<std::string> markers{text.empty() ? "" : "text"};
    for (std::sregex_iterator i(text.begin(), text.end(), marker), end; i != end; ++i) {
        markers.insert(std::regex_match(i->str(), known) ? i->str() : "");
    }
    return markers;
}

std::string wholeSource() {
    std::string source;
    for (const auto& entry : fs::recursive_directory_iterator(kProject / "src")) {
        if (std::set<fs::path>{".cpp", ".h"}.contains(entry.path().extension())) source += readWholeFile(entry.path());
    }
    return source;
}

bool isColumn(const std::string& table, std::size_t number) {
    static const std::vector<TableDef> tables = companySchema();
    const auto found = std::ranges::find(tables, table, &TableDef::name);
    return found != tables.end() && number < found->fields.size();
}

bool hasWord(const std::string& source, const std::string& word) {
    for (std::size_t at = source.find(word); at != std::string::npos; at = source.find(word, at + 1)) {
        if (std::isalnum(static_cast<unsigned char>(source[at + word.size()])) == 0) return true;
    }
    return false;
}

/// Named texts are used where their name stands; captions and names of columns are found by what they belong to: a
/// control by its whole name, a numbered one by its pattern, a label also by its box.
bool isUsed(const std::string& key, const std::string& name, const std::string& source) {
    static const std::regex column("RGA_([^_]+)_0*([0-9]+)"), form("SP_FRM_([^_]+)"),
        control("SP_FRM_([^_]+)_((Lbl_)?(.*?)(_?[0-9]+)?)(_TT)?");
    const auto quoted = [&](const std::string& word) { return source.find('"' + word + '"') != std::string::npos; };
    std::smatch match;
    if (!name.empty()) return hasWord(source, name);
    if (std::regex_match(key, match, column)) return isColumn(match[1], std::stoul(match[2]));
    if (std::regex_match(key, match, form)) return quoted(match[1]);
    if (!std::regex_match(key, match, control) || !quoted(match[1])) return false;
    const std::string label = match[3], stem = match[4];
    const bool numbered = quoted(label + stem) || quoted(label + "%1");
    return quoted(match[2]) || (match[5].matched && numbered) || (!label.empty() && quoted(stem));
}

TEST(Texts, TableIsWellFormedAndUsed) {
    const Tsv table = Tsv::read(kProject / "data/lang/texts.tsv");
    const std::string source = wholeSource();
    std::set<std::string> keys;
    for (const auto& row : table.rows) {
        SCOPED_TRACE(row[0]);
        ASSERT_EQ(row.size(), 4U) << "key, SE, EN, name";
        EXPECT_TRUE(keys.insert(upperCase(row[0])).second) << "twice";
        EXPECT_EQ(markersOf(row[1]).count(""), 0U) << "empty, or with an unknown marker";
        EXPECT_EQ(markersOf(row[1]), markersOf(row[2])) << "the languages differ in their markers";
        EXPECT_TRUE(isUsed(row[0], row[3], source)) << "nobody uses it";
    }
}

/// Changes are listed under the names of columns. A table that has names at all has one for each, but for its ID.
TEST(Texts, NoColumnOfAListedTableLacksItsName) {
    std::map<std::string, std::vector<std::string>> texts;
    for (const auto& row : Tsv::read(kProject / "data/lang/texts.tsv").rows) texts[row[0]] = row;
    int listed = 0;
    for (const TableDef& table : companySchema()) {
        const auto keyOf = [&](std::size_t i) { return fmt::format("RGA_{}_{:03}", table.name, i); };
        if (!texts.contains(keyOf(1))) continue;
        ++listed;
        for (std::size_t i = 1; i < table.fields.size(); ++i) {
            const auto found = texts.find(keyOf(i));
            ASSERT_NE(found, texts.end()) << keyOf(i) << " " << table.fields[i].name;
            EXPECT_EQ(found->second[1], table.fields[i].name) << "a name has moved to another column";
            EXPECT_NE(found->second[2], "") << table.fields[i].name;
        }
    }
    EXPECT_EQ(listed, 9) << "all but the settings";
}

}  // namespace
}  // namespace kolmera::test
