#include <gtest/gtest.h>

#include <algorithm>
#include <regex>
#include <set>
#include <sstream>

#include "platform/tsv.h"

namespace kolmera::test {
namespace {

struct Told {
    std::string name, swedish, english;
};

std::vector<Told> namedTexts() {
    std::vector<Told> texts;
    std::istringstream rows(readWholeFile(KOLMERA_SOURCE_DIR "/data/lang/texts.tsv"));
    for (std::string row; std::getline(rows, row);) {
        std::vector<std::string> cells;
        std::istringstream columns(row);
        for (std::string cell; std::getline(columns, cell, '\t');) cells.push_back(cell);
        if (cells.size() == 4 && !cells[0].starts_with('#')) texts.push_back({cells[3], cells[1], cells[2]});
    }
    return texts;
}

/// The first sentence of a message, with … for what the program puts in, as the guide quotes it.
std::string quoted(const std::string& text) {
    std::string sentence = std::regex_replace(text, std::regex("^(<CRLF>|<VAR.>)*(<CRLF>)|<SP>"), "");
    sentence = sentence.substr(0, sentence.find("<CRLF>"));
    sentence = std::regex_replace(sentence, std::regex("<VAR.>"), "…");
    std::smatch end;
    if (std::regex_search(sentence, end, std::regex("[.?] "))) sentence.resize(static_cast<size_t>(end.position()) + 1);
    sentence.erase(0, sentence.find_first_not_of(' '));
    return text.starts_with("<SP>") ? "… " + sentence : sentence;
}

/// What has to be explained: sentences, and what stands in them, but no titles, progress, or parts of confirmations.
bool isMessage(const Told& told) {
    static const std::set<std::string> modules{"fault",    "look",     "remark",  "warning",  "definitions", "mask",
                                               "company",  "run",      "preview", "rejects",  "runs",        "source",
                                               "prismain", "prisstyr", "limits",  "prismtyp", "preparation"};
    static const std::set<std::string> others{
        "prismain::kConfirmWithCommand", "prismain::kConfirm",          "prismain::kBeforeRun",
        "prismain::kCanBeTakenBack",     "look::kReadAllTheSame",       "look::kNumberForm",
        "preparation::kExitStatus",      "preparation::kNoSuchProgram", "runs::kProductsOfRun"};
    static const std::regex sentence("[.?]( |$|<)");
    const std::string module = told.name.substr(0, told.name.find(':'));
    if (!modules.contains(module) || others.contains(told.name)) return false;
    if (told.name.ends_with("Title") || told.english.ends_with("...")) return false;
    return std::set<std::string>{"fault", "remark", "warning"}.contains(module) ||
           std::regex_search(told.english, sentence);
}

TEST(Guide, ExplainsEveryMessageAndNoOther) {
    const std::vector<Told> texts = namedTexts();
    const struct {
        const char *file, *chapter, *end;
        std::string Told::*text;
    } guides[] = {{"guide.sv.md", "\n## Felsökning\n", "\n## Sakregister\n", &Told::swedish},
                  {"guide.en.md", "\n## Troubleshooting\n", "\n## Index\n", &Told::english}};
    for (const auto& guide : guides) {
        SCOPED_TRACE(guide.file);
        const std::string whole = readWholeFile(std::string(KOLMERA_SOURCE_DIR "/docs/") + guide.file);
        const auto begin = whole.find(guide.chapter), end = whole.find(guide.end);
        ASSERT_TRUE(begin < end && end != std::string::npos);
        std::set<std::string> explained;
        bool bold = false;  // what stands between two marks
        for (std::size_t at = begin; at < end; bold = !bold) {
            const auto next = std::min(whole.find("**", at), end);
            if (bold) explained.insert(whole.substr(at, next - at));
            at = next + 2;
        }
        std::set<std::string> told;
        for (const Told& text : texts) {
            const std::string sentence = quoted(text.*guide.text);
            told.insert(sentence);
            if (!isMessage(text)) continue;
            EXPECT_TRUE(explained.contains(sentence)) << "not explained: " << text.name << ' ' << sentence;
        }
        for (const std::string& sentence : explained) {
            EXPECT_TRUE(told.contains(sentence)) << "nobody says: " << sentence;
        }
        EXPECT_GT(explained.size(), 150U);
    }
}

}  // namespace
}  // namespace kolmera::test
