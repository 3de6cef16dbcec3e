#include <gtest/gtest.h>

#include <algorithm>
#include <map>
#include <optional>
#include <regex>
#include <set>

#include "lang/languagetexts.h"
#include "platform/lettercase.h"
#include "platform/tsv.h"

// Every text that the code asks for has to stand in data/lang/texts.tsv, in both languages. The code is searched for
// calls of the look-ups; their form, module and number have to be literals, or constants of the same file or of its
// header. Whatever else a call is given has to be listed below with the values that it takes.

namespace kolmera::test {
namespace {

namespace fs = std::filesystem;

const fs::path kSource(KOLMERA_SOURCE_DIR);

/// An argument of a look-up that is not written in the call, and the values that it takes; none in a wrapper, whose
/// callers are searched themselves, or whose forms name their own texts.
struct Indirect {
    const char* file;
    const char* argument;
    std::vector<std::string> values;
};

std::vector<std::string> numbers(int first, int last) {
    std::vector<std::string> values;
    for (int number = first; number <= last; ++number) values.push_back(std::to_string(number));
    return values;
}

const std::vector<Indirect> kIndirect = {
    {"src/cli/session.h", "number", {}},
    {"src/cli/copycommand.cpp", "number", {"265", "266"}},
    {"src/cli/newcommand.cpp", "doneText", {"230", "231"}},
    {"src/cli/newcommand.cpp", "text", {"232", "233"}},
    {"src/import/runmachinery.cpp", "reason", {"452", "453"}},
    {"src/cli/runcommand.cpp",
     "line.label",
     {"201", "202", "203", "204", "205", "206", "207", "208", "371", "372", "507", "508", "509", "551", "552"}},
    {"src/definitions/jobeditor.cpp", "text", {"412", "413"}},
    {"src/definitions/savemessages.cpp", "refusals.changedElsewhere", {"401", "402", "403", "404", "405"}},
    {"src/definitions/savemessages.cpp", "refusals.nameTaken", {"409", "410"}},
    {"src/definitions/jobeditor.cpp", "first->first", numbers(30, 34)},
    {"src/definitions/prisstyr.cpp", "filterText", {"55", "56"}},
    {"src/definitions/rulelists.cpp",
     "number",
     {"11", "12", "15", "20", "21", "25", "26", "31", "32", "33", "34", "35"}},
    {"src/definitions/targetlist.cpp", "place", numbers(0, 155)},
    {"src/discounts/lettereditor.cpp", "failureText", {"309", "318", "319"}},
    {"src/discounts/lettermessages.cpp", "text", {"304", "305", "310", "620", "621"}},
    {"src/import/confirmationform.cpp", "form", {"PrisUtfö", "PrisUtFa"}},
    {"src/import/prismain.cpp", "static_cast<int>(column) + 1", numbers(1, 4)},
    {"src/import/runmessage.cpp", "label", {"204", "507", "508", "509", "555"}},
    {"src/import/runmessage.cpp",
     "kind.text",
     {"551", "552", "553", "554", "556", "557", "558", "559", "560", "561", "562", "568"}},
    {"src/import/filedoubt.cpp", "textNumber(fact.look)", numbers(510, 527)},
    {"src/import/runmachinery.cpp", "statusText", {"50", "52", "54"}},
    {"src/import/runmachinery.cpp", "statusText + 1", {"51", "53", "55"}},
    {"src/ui/qtmessageport.cpp", "row.text", numbers(140, 143)},
    {"src/ui/qtmessageport.cpp", "kOK.text", {"140"}},
    {"src/ui/translation.cpp", "fromQt(form.objectName())", {}},
    {"src/suite/starttexts.cpp", "number", {}},
    {"src/suite/captions.cpp", "fromQt(form.objectName())", {}},
    {"src/suite/captions.cpp", "key", {}},
};

/// Texts that are looked up without a number in the code.
const std::vector<std::string> kFurtherKeys = {
    "RES_5000", "RES_5001", "RES_1344", "RES_1345", "RES_1346", "RES_1354", "RES_1355", "RES_5501",
    "RES_5502", "RES_5503", "RES_5504", "RES_5505", "RES_5601", "RES_5602", "RES_5603", "RES_5604",
    "RES_5605", "RES_5606", "RES_5607", "RES_5608", "RES_5609", "RES_5610", "RES_5611",
};

enum class Key { Form, FormString, Module, Message, Register, Literal };

struct LookUp {
    const char* function;
    Key key;
    bool named;             ///< the first argument is the name of a form, module or register
    const char* name = "";  ///< ... or this
};
const std::vector<LookUp> kLookUps = {
    {"FormulärSträng", Key::FormString, true},
    {"FormulärSträngMed1", Key::FormString, true},
    {"FormulärSträngMed2", Key::FormString, true},
    {"FormulärSträngMed3", Key::FormString, true},
    {"FormulärText", Key::Form, true},
    {"ModulText", Key::Module, true},
    {"ModulTextMed", Key::Module, true},
    {"RegisterText", Key::Register, true},
    {"ResText", Key::Message, false},
    {"SpråkText", Key::Literal, true},
    {"session.text", Key::Module, false, "KMR"},
    {"session_.text", Key::Module, false, "KMR"},
};

std::string keyOf(Key key, const std::string& name, int number) {
    char digits[16];
    std::snprintf(digits, sizeof digits, "%03d", number);
    switch (key) {
        case Key::Form:
            return "SP_FRM_" + name;
        case Key::FormString:
            return "SP_FRM_" + name + "_String" + digits;
        case Key::Module:
            return "SP_MOD_" + name + "_" + digits;
        case Key::Register:
            return "RGA_" + name + "_" + digits;
        case Key::Message:
            return "RES_" + std::to_string(number);
        case Key::Literal:
            return name;
    }
    return {};
}

/// The source of one file, and of the header that belongs to it.
struct SourceFile {
    explicit SourceFile(const fs::path& file)
        : name(file.lexically_relative(kSource).string()), text(readWholeFile(file)) {
        fs::path header = file;
        header.replace_extension(".h");
        constants = text;
        if (header != file && fs::exists(header)) constants += readWholeFile(header);
    }
    /// The value of a literal or of a constant.
    std::optional<std::string> valueOf(const std::string& argument) const {
        std::smatch match;
        if (std::regex_match(argument, match, std::regex("\"(.*)\""))) return match[1];
        if (std::regex_match(argument, std::regex("[0-9]+"))) return argument;
        if (!std::regex_match(argument, std::regex("k[A-Za-z0-9_\x80-\xff]+"))) return std::nullopt;
        const std::regex constant("constexpr [^;]*\\b" + argument + R"((?:\[\])? ?[={] ?"?([^",;}]*))");
        return std::regex_search(constants, match, constant) ? std::optional<std::string>(match[1]) : std::nullopt;
    }
    /// Every value that an argument takes; nothing when that cannot be read.
    std::optional<std::vector<std::string>> valuesOf(const std::string& argument) const {
        if (const auto value = valueOf(argument)) return std::vector{*value};
        for (const Indirect& row : kIndirect) {
            if (row.file == name && row.argument == argument) return row.values;
        }
        return std::nullopt;
    }
    std::string name, text, constants;
};

/// The arguments of a call whose opening bracket stands at `open`.
std::vector<std::string> argumentsAt(const std::string& text, std::size_t open) {
    std::vector<std::string> arguments(1);
    int depth = 0;
    bool quoted = false;
    for (std::size_t i = open; i < text.size(); ++i) {
        const char sign = text[i];
        if (sign == '"' && text[i - 1] != '\\') quoted = !quoted;
        if (!quoted && (sign == '(' || sign == '{')) {
            if (depth++ == 0) continue;
        } else if (!quoted && (sign == ')' || sign == '}')) {
            if (--depth == 0) break;
        } else if (!quoted && sign == ',' && depth == 1) {
            arguments.emplace_back();
            continue;
        }
        arguments.back() += sign;
    }
    for (std::string& argument : arguments) argument = std::regex_replace(argument, std::regex("^\\s+|\\s+$"), "");
    return arguments;
}

/// What the whole code asks for, and the calls that cannot be read.
struct Asked {
    std::set<std::string> keys;
    std::vector<std::string> unreadable;

    void add(const SourceFile& source, const LookUp& lookUp, std::vector<std::string> arguments) {
        const bool numbered = lookUp.key != Key::Form && lookUp.key != Key::Literal;
        arguments.resize(2);
        const std::string name = lookUp.named ? arguments[0] : '"' + std::string(lookUp.name) + '"';
        const std::string number = numbered ? arguments[lookUp.named ? 1 : 0] : "0";
        const auto names = source.valuesOf(name);
        const auto numbers = source.valuesOf(number);
        if (!names || !numbers) {
            unreadable.push_back(source.name + ": " + lookUp.function + " is given " + (names ? number : name));
            return;
        }
        for (const std::string& one : *names) {
            for (const std::string& text : *numbers) keys.insert(keyOf(lookUp.key, one, std::stoi(text)));
        }
    }
};

Asked askedFor() {
    Asked asked;
    for (const auto& entry : fs::recursive_directory_iterator(kSource / "src")) {
        const fs::path& file = entry.path();
        if (file.parent_path() == kSource / "src/lang" || (file.extension() != ".cpp" && file.extension() != ".h"))
            continue;
        const SourceFile source(file);
        for (const LookUp& lookUp : kLookUps) {
            const std::string call = std::string(lookUp.function) + "(";
            for (std::size_t at = source.text.find(call); at != std::string::npos;
                 at = source.text.find(call, at + 1)) {
                asked.add(source, lookUp, argumentsAt(source.text, at + call.size() - 1));
            }
        }
    }
    asked.keys.insert(kFurtherKeys.begin(), kFurtherKeys.end());
    return asked;
}

Tsv texts() { return Tsv::read(kSource / "data/lang/texts.tsv"); }

TEST(Texts, NoneThatTheCodeAsksForIsMissing) {
    std::map<std::string, std::vector<std::string>> stored;
    for (const auto& row : texts().rows) stored[row.front()] = row;
    const Asked asked = askedFor();
    EXPECT_GT(asked.keys.size(), kFurtherKeys.size() + 20) << "the calls are not found";
    EXPECT_EQ(asked.unreadable, std::vector<std::string>{}) << "list them with their values in kIndirect";
    std::vector<std::string> missing;
    for (const std::string& key : asked.keys) {
        const auto row = stored.find(key);
        if (row == stored.end() || row->second[1].empty() || row->second[2].empty()) missing.push_back(key);
    }
    EXPECT_EQ(missing, std::vector<std::string>{});
}

TEST(Texts, TableIsWellFormed) {
    const Tsv table = texts();
    EXPECT_EQ(table.columns, (std::vector<std::string>{"key", "SE", "EN"}));
    std::set<std::string> keys;
    std::vector<std::string> malformed;
    const std::regex key("(SP_FRM_[^ _]+(_[^ ]+)?|SP_MOD_[A-Z]+_[0-9]{3,}|RES_[0-9]+|RGA_[^ _]+_[0-9]{3,})");
    const std::regex marker("<[^<>]*>");
    const std::regex known("<(LF|CRLF|TAB|SP|VAR[123])>");
    for (const auto& row : table.rows) {
        bool good = row.size() == 3 && std::regex_match(row[0], key) && keys.insert(upperCase(row[0])).second;
        std::vector<std::multiset<std::string>> markers(2);
        for (std::size_t column = 1; good && column <= 2; ++column) {
            good = !row[column].empty();
            for (std::sregex_iterator i(row[column].begin(), row[column].end(), marker), end; i != end; ++i) {
                good = good && std::regex_match(i->str(), known);
                markers[column - 1].insert(i->str());
            }
        }
        if (!good || markers[0] != markers[1]) malformed.push_back(row[0]);
    }
    EXPECT_EQ(malformed, std::vector<std::string>{})
        << "not three columns, a key twice or misspelt, an empty text, or markers that differ between the languages";
}

}  // namespace
}  // namespace kolmera::test
