#include "lang/languagetexts.h"

#include <fmt/format.h>

#include <algorithm>
#include <utility>

#include "platform/attempt.h"
#include "platform/lettercase.h"
#include "platform/paths.h"

namespace kolmera {

namespace {

std::string messageKey(int number) { return "RES_" + std::to_string(number); }

std::unique_ptr<Database> openIn(const std::filesystem::path& folder) {
    if (folder.empty()) return nullptr;
    std::unique_ptr<Database> database;
    OpenOptions options;
    options.readOnly = true;
    PassedOverSilently passedOver;
    attempt(passedOver, "DVLang.sys",
            [&] { database = openFileDatabase(findWithoutCase(folder, "DVLang.sys"), options); });
    return database;
}

std::optional<std::string> textOfLines(std::span<const std::string_view> lines, std::string_view key,
                                       std::string_view language) {
    const std::string beginning = std::string(key) + "\t";
    const auto line = std::ranges::find_if(lines, [&](std::string_view text) { return text.starts_with(beginning); });
    if (line == lines.end()) return std::nullopt;
    const std::vector<std::string> texts = split(line->substr(beginning.size()), "\t");
    return language == "EN" && texts.size() > 1 ? texts[1] : texts[0];
}

}  // namespace

void LanguageTexts::ÖppnaSpråk(const std::filesystem::path& programFolder, const std::filesystem::path& serverFolder) {
    StängSpråk();
    // Shared in both places: a terminal run beside the open window needs the texts too.
    database_ = openIn(programFolder);
    if (!database_) database_ = openIn(serverFolder);
    if (!database_) return;
    PassedOverSilently passedOver;
    attempt(passedOver, "DVLang.sys", [&] {
        lang_ = database_->open("Lang", RecordsetType::Table, options::kReadOnly);
        lang_->setIndex("LangKey");
    });
}

void LanguageTexts::StängSpråk() {
    lang_.reset();
    database_.reset();
}

std::string LanguageTexts::NormaliseraSpråk(std::string_view code) { return code == "EN" ? "EN" : "SE"; }

void LanguageTexts::InitSpråkOrd(std::string_view languageCode) { language_ = NormaliseraSpråk(languageCode); }

std::optional<std::string> LanguageTexts::storedText(std::string_view key) {
    std::optional<std::string> text;
    PassedOverSilently passedOver;
    attempt(passedOver, "DVLang.sys", [&] {
        if (!lang_) return;
        const Value keys[] = {std::string(key)};
        lang_->seek("=", keys);
        if (!lang_->noMatch()) text = textOf(lang_->value(language_));
    });
    return text ? text : textOfLines(fallback_, key, language_);
}

std::string LanguageTexts::SpråkText(std::string_view key) { return AvkodaPlatshållare(storedText(key).value_or("")); }

std::string LanguageTexts::ResText(int number) { return SpråkText(messageKey(number)); }

std::string LanguageTexts::FormulärText(std::string_view form) { return SpråkText(fmt::format("SP_FRM_{}", form)); }

std::string LanguageTexts::FormulärSträngNyckel(std::string_view form, int number) {
    return fmt::format("SP_FRM_{}_String{:03}", form, number);
}

std::string LanguageTexts::FormulärSträng(std::string_view form, int number) {
    return SpråkText(FormulärSträngNyckel(form, number));
}

std::string LanguageTexts::FormulärSträngMed1(std::string_view form, int number, std::string_view var1) {
    return replaceAll(FormulärSträng(form, number), "<VAR1>", var1);
}

std::string LanguageTexts::FormulärSträngMed2(std::string_view form, int number, std::string_view var1,
                                              std::string_view var2) {
    return replaceAll(FormulärSträngMed1(form, number, var1), "<VAR2>", var2);
}

std::string LanguageTexts::FormulärSträngMed3(std::string_view form, int number, std::string_view var1,
                                              std::string_view var2, std::string_view var3) {
    return replaceAll(FormulärSträngMed2(form, number, var1, var2), "<VAR3>", var3);
}

std::string LanguageTexts::ModulText(std::string_view module, int number) {
    return SpråkText(fmt::format("SP_MOD_{}_{:03}", module, number));
}

std::string LanguageTexts::ModulTextMed(std::string_view module, int number, std::string_view var1) {
    return replaceAll(ModulText(module, number), "<VAR1>", var1);
}

std::string LanguageTexts::RegisterText(std::string_view registerName, int number) {
    return SpråkText(fmt::format("RGA_{}_{:03}", registerName, number));
}

std::string LanguageTexts::AvkodaPlatshållare(std::string_view text) {
    constexpr std::pair<std::string_view, std::string_view> kMarkers[] = {
        {"<LF>", "\n"}, {"<CRLF>", "\r\n"}, {"<TAB>", "\t"}, {"<SP>", " "}};
    std::string decoded(text);
    for (const auto& [marker, sign] : kMarkers) decoded = replaceAll(decoded, marker, sign);
    return decoded;
}

}  // namespace kolmera
